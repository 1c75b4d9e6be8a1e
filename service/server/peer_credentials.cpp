#include "service/server/peer_credentials.h"

#include <sys/socket.h>

namespace TWB::Service {

std::optional<uid_t> peerUid(int socketDescriptor)
{
    struct ucred credentials
    { };
    socklen_t length = sizeof(credentials);
    if (socketDescriptor < 0 || getsockopt(socketDescriptor, SOL_SOCKET, SO_PEERCRED, &credentials, &length) != 0)
        return std::nullopt;
    return credentials.uid;
}

bool isPeerAllowed(uid_t peer, uid_t own)
{
    return peer == own || peer == 0;
}

} // namespace TWB::Service
