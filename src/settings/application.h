#pragma once

#include "settings/options_page.h"

namespace TWB::GUI::Settings {

/// The Application tab: the addressee that new plans' e-mail notices start with.
class TWBCONSOLE_EXPORT Application final : public OptionsPage
{
    Q_OBJECT
    Q_DISABLE_COPY(Application)
public:
    explicit Application(QWidget* parent = nullptr);
};

} // namespace TWB::GUI::Settings
