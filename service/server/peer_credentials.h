#pragma once

#include <optional>

#include <sys/types.h>

namespace TWB::Service {

/// The uid of the process at the other end of a connected local socket, from SO_PEERCRED.
std::optional<uid_t> peerUid(int socketDescriptor);

/// A peer may talk to the service when it runs as the service's own user or as root.
bool isPeerAllowed(uid_t peer, uid_t own);

} // namespace TWB::Service
