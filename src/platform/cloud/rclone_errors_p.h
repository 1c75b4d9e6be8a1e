#pragma once

#include "platform/cloud/rclone_remote_p.h"

#include <QByteArray>
#include <QString>

namespace TWL::Cloud::Detail {

/// A failure told as an IOperation::ErrorCode and a sentence for the user.
struct Failure
{
    int code = 0;
    QString message;
};

/// Reads what rclone wrote on its standard error when it failed, and says it in the user's terms.
/// `container` is the bucket or folder the run was about, for the message.
Failure explainRclone(const RcloneRemote& remote, const QByteArray& errors, const QString& container);

} // namespace TWL::Cloud::Detail
