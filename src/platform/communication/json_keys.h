#pragma once

#include <QLatin1String>

/// The thirteen keys of the command envelope. Console code writes only Params and reads only Data;
/// the others belong to the channel.
namespace TWB::Common::Communication::JsonKeys {

inline const QLatin1String Command("command");
inline const QLatin1String Id("id");
inline const QLatin1String SessionId("session_id");
inline const QLatin1String ConnectionType("connection_type");
inline const QLatin1String Type("type");
inline const QLatin1String Reply("reply");
inline const QLatin1String Request("request");
inline const QLatin1String Params("params");
inline const QLatin1String Data("data");
inline const QLatin1String Status("status");
inline const QLatin1String Error("error");
inline const QLatin1String Success("success");
inline const QLatin1String ErrorString("error_string");

/// Message kinds on the wire, in the "type" member.
inline const QLatin1String Notification("notification");
/// The only connection type this channel has.
inline const QLatin1String Local("local");

} // namespace TWB::Common::Communication::JsonKeys
