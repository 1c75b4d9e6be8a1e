#pragma once

#include "settings/options_page.h"

namespace TWB::GUI::Settings {

/// The Network tab: speed limits, retries, certificate checks and the proxy of the runs' connections.
class TWBCONSOLE_EXPORT Network final : public OptionsPage
{
    Q_OBJECT
    Q_DISABLE_COPY(Network)
public:
    explicit Network(QWidget* parent = nullptr);
};

} // namespace TWB::GUI::Settings
