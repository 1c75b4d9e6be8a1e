#include "storages/ssl_cert_make_trust_dialog.h"

#include <QDialogButtonBox>
#include <QFontDatabase>
#include <QFormLayout>
#include <QLabel>
#include <QLocale>
#include <QPushButton>
#include <QVBoxLayout>

namespace TWB::GUI {

namespace {

QString names(const QStringList& list)
{
    return list.isEmpty() ? QStringLiteral("-") : list.join(QStringLiteral(", "));
}

} // namespace

SslCertMakeTrustDialog::SslCertMakeTrustDialog(const QSslCertificate& certificate, QWidget* parent)
    : QDialog(parent)
{
    setWindowTitle(tr("Untrusted certificate"));
    auto layout = new QVBoxLayout(this);
    auto intro = new QLabel(tr("The server presented a certificate that this computer does not trust. Trust it only "
                               "if you know that it belongs to your storage."),
        this);
    intro->setWordWrap(true);
    layout->addWidget(intro);
    auto form = new QFormLayout;
    const QLocale locale;
    const auto add = [&](const QString& label, const QString& value) {
        auto text = new QLabel(value, this);
        text->setTextInteractionFlags(Qt::TextSelectableByMouse);
        text->setWordWrap(true);
        form->addRow(label, text);
    };
    add(tr("Issued to:"), names(certificate.subjectInfo(QSslCertificate::CommonName)));
    add(tr("Issued by:"), names(certificate.issuerInfo(QSslCertificate::CommonName)));
    add(tr("Valid from:"), locale.toString(certificate.effectiveDate(), QLocale::ShortFormat));
    add(tr("Valid until:"), locale.toString(certificate.expiryDate(), QLocale::ShortFormat));
    // Two even lines of sixteen bytes, in a fixed font, so that a user can compare them with the server's.
    const QByteArray digest = certificate.digest(QCryptographicHash::Sha256);
    auto fingerprint = new QLabel(
        QString::fromLatin1(digest.left(16).toHex(':').toUpper() + '\n' + digest.mid(16).toHex(':').toUpper()), this);
    fingerprint->setFont(QFontDatabase::systemFont(QFontDatabase::FixedFont));
    fingerprint->setTextInteractionFlags(Qt::TextSelectableByMouse);
    form->addRow(new QLabel(tr("SHA-256 fingerprint:"), this));
    form->addRow(fingerprint);
    layout->addLayout(form);
    auto buttons = new QDialogButtonBox(QDialogButtonBox::Cancel, this);
    auto trust = buttons->addButton(tr("Trust"), QDialogButtonBox::AcceptRole);
    trust->setDefault(false);
    buttons->button(QDialogButtonBox::Cancel)->setDefault(true);
    connect(buttons, &QDialogButtonBox::accepted, this, &QDialog::accept);
    connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);
    layout->addWidget(buttons);
    setMinimumWidth(420);
}

SslCertMakeTrustDialog::~SslCertMakeTrustDialog() = default;

} // namespace TWB::GUI
