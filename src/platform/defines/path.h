#pragma once

#include "platform/twbplatform_export.h"

#include <QString>

/// Places of the product on this machine. Each one can be moved with an environment variable,
/// so that a test or a private instance never touches the user's own data.
namespace SHARED::defines::Path {

/// Folder of the running program, with a trailing slash, so that a file name can be appended directly.
TWBPLATFORM_EXPORT QString bin_path();
/// $TWB_DATA_DIR, else $XDG_DATA_HOME/tidewrack, else ~/.local/share/tidewrack.
TWBPLATFORM_EXPORT QString dataDir();
/// <data folder>/log.
TWBPLATFORM_EXPORT QString logDir();
/// $TWB_SERVICE_SOCKET, else $XDG_RUNTIME_DIR/tidewrack/service.sock, else /tmp/tidewrack-<uid>/service.sock.
TWBPLATFORM_EXPORT QString serviceSocket();

namespace ETC::CONFIG {
/// The product configuration file: $TWB_CONFIG_FILE, else /etc/tidewrack/tidewrack.conf.
TWBPLATFORM_EXPORT QString tidewrackBackup_conf();
} // namespace ETC::CONFIG

} // namespace SHARED::defines::Path
