#pragma once

#include "twbconsole_export.h"

#include <QDialog>
#include <QSslCertificate>

namespace TWB::GUI {

/// Shows the certificate a storage's server presented and asks whether to trust it from now on.
class TWBCONSOLE_EXPORT SslCertMakeTrustDialog : public QDialog
{
    Q_OBJECT
    Q_DISABLE_COPY(SslCertMakeTrustDialog)
public:
    explicit SslCertMakeTrustDialog(const QSslCertificate& certificate, QWidget* parent = nullptr);
    ~SslCertMakeTrustDialog() override;
};

} // namespace TWB::GUI
