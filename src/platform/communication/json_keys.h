#pragma once

#include <QLatin1String>

/// The thirteen keys of the command envelope. Console code writes only Params and reads only Data;
/// the others belong to the channel.
namespace TWB::Common::Communication::JsonKeys {

inline constexpr QLatin1String Command("command");
inline constexpr QLatin1String Id("id");
inline constexpr QLatin1String SessionId("session_id");
inline constexpr QLatin1String ConnectionType("connection_type");
inline constexpr QLatin1String Type("type");
inline constexpr QLatin1String Reply("reply");
inline constexpr QLatin1String Request("request");
inline constexpr QLatin1String Params("params");
inline constexpr QLatin1String Data("data");
inline constexpr QLatin1String Status("status");
inline constexpr QLatin1String Error("error");
inline constexpr QLatin1String Success("success");
inline constexpr QLatin1String ErrorString("error_string");

/// Message kinds on the wire, in the "type" member.
inline constexpr QLatin1String Notification("notification");
/// The only connection type this channel has.
inline constexpr QLatin1String Local("local");

} // namespace TWB::Common::Communication::JsonKeys
