#include "platform/communication/notification_types.h"

#include <QSet>

namespace TWB::Common::Communication::Notification::Type {

const QList<QUuid>& all()
{
    static const QList<QUuid> list = [] {
        const char* const texts[] = {
            PlanCreated,
            PlanUpdated,
            PlanRemoved,
            PlanStateChanged,
            PlanProgress,
            ApplicationQuit,
            UpdateStarting,
            StorageListChanged,
            StorageAdded,
            StorageUpdated,
            StorageRemoved,
            StorageSyncStarted,
            StorageSyncFinished,
            RepositorySyncMessage1,
            RepositorySyncMessage2,
            // declared, compared with by no console code
            "{08e30daa-82eb-4da9-aff9-aa3d88199386}",
            "{c810f13e-b634-466a-a005-74d42f4c3981}",
            "{47f131a6-328f-462d-b1f8-ff12095a31b0}",
            "{d192f62b-08a0-4c27-8829-e2303d288a87}",
            "{dc172643-a5ca-4208-aabf-0d54e38e17e9}",
            "{9ca3a0dc-8a9f-4a9e-9055-31fef75f8a36}",
            "{6DBBCBE8-84BA-4EEC-83D9-8BA1698846F5}",
            "{41ec1d83-7bf1-444f-a249-e7e66a83e995}",
            "{852b0208-414c-11e8-91aa-309c2320a33e}",
        };
        QList<QUuid> l;
        for (const char* t : texts)
            l << QUuid(QLatin1String(t));
        return l;
    }();
    return list;
}

bool isDeclared(const QUuid& type)
{
    static const QSet<QUuid> set(all().cbegin(), all().cend());
    return !type.isNull() && set.contains(type);
}

} // namespace TWB::Common::Communication::Notification::Type
