#pragma once

#include "twbconsole_export.h"

#include <QWidget>

class QLabel;

namespace TWB::GUI::Settings {

/// The licence tab of the standalone edition: the edition and what it allows, as
/// `License::LicenseRestrictions` tells every other page.
class TWBCONSOLE_EXPORT LicensePage final : public QWidget
{
    Q_OBJECT
    Q_DISABLE_COPY(LicensePage)
public:
    explicit LicensePage(QWidget* parent = nullptr);

public Q_SLOTS:
    /// Reads the licence afresh, since it may change while the console runs.
    void loadSettings();

private:
    QLabel* edition; // owned by parent-child
    QLabel* notices; // owned by parent-child
    QLabel* actions; // owned by parent-child
    QLabel* shares; // owned by parent-child
};

} // namespace TWB::GUI::Settings
