#pragma once

#include "platform/twbplatform_export.h"

#include <QList>
#include <QUuid>

/// Type GUIDs of the service's notifications, as they travel in a notification's "id".
namespace TWB::Common::Communication::Notification::Type {

inline constexpr char PlanCreated[] = "{ca927cb1-de60-46c1-a978-cda7a44bbf01}";
inline constexpr char PlanUpdated[] = "{fbfaf8e1-ec81-4499-8e0f-da8f7446e5ac}";
inline constexpr char PlanRemoved[] = "{162e1dd2-3f83-4b43-83fe-26cf3e643660}";
inline constexpr char PlanStateChanged[] = "{b0ec9f80-5418-431e-8a72-5ecf91ab4f82}";
inline constexpr char PlanProgress[] = "{59617d9c-b90c-467a-bb51-b846c87f2401}";
inline constexpr char ApplicationQuit[] = "{23d7ef70-3337-4dc9-babc-d122daf685ad}";
inline constexpr char UpdateStarting[] = "{24B13160-716F-41B7-AD5F-A15D496A1AF8}";

inline constexpr char StorageListChanged[] = "{3e7b39aa-15ee-46d3-a11e-c9393008fee0}";
inline constexpr char StorageAdded[] = "{312ca1b4-38ce-45ff-a24c-549abc467bcd}";
inline constexpr char StorageUpdated[] = "{daf6f597-e39d-4041-82a7-f82bf571642d}";
inline constexpr char StorageRemoved[] = "{a29e9a7a-efa9-4907-82de-dc33032fbbeb}";
inline constexpr char StorageSyncStarted[] = "{3a129a88-1dc3-4e22-a933-2652269e3e08}";
/// Repository synchronisation finished; read by the storage list and the synchronisation dialog alike.
inline constexpr char StorageSyncFinished[] = "{CD073BE4-9EDD-495F-AC72-DC6BD113DD82}";

inline constexpr char RepositorySyncMessage1[] = "{DBBCCEF7-55F1-4CED-A2CC-CF3E7024D528}";
inline constexpr char RepositorySyncMessage2[] = "{7544263D-4782-4255-95F5-877A07C520CC}";

/// Every declared type, including those no console code compares with.
TWBPLATFORM_EXPORT const QList<QUuid>& all();
/// Whether a GUID is one of the declared types.
TWBPLATFORM_EXPORT bool isDeclared(const QUuid& type);

} // namespace TWB::Common::Communication::Notification::Type
