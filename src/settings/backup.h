#pragma once

#include "settings/options_page.h"

namespace TWB::GUI::Settings {

class RetentionPolicy;

/// The Backup tab: the retention of plans on the default policy, and whether scheduled backups run
/// on battery power.
class TWBCONSOLE_EXPORT Backup final : public OptionsPage
{
    Q_OBJECT
    Q_DISABLE_COPY(Backup)
public:
    explicit Backup(QWidget* parent = nullptr);

    RetentionPolicy* retention() const { return m_retention; }

public Q_SLOTS:
    void loadSettings() override;

private:
    RetentionPolicy* m_retention; // owned by parent-child
};

} // namespace TWB::GUI::Settings
