#pragma once

#include "settings/options_page.h"

namespace TWB::GUI::Settings {

/// The Advanced tab: how many connections, how large packs and how much memory a plan's run uses.
class TWBCONSOLE_EXPORT Advanced final : public OptionsPage
{
    Q_OBJECT
    Q_DISABLE_COPY(Advanced)
public:
    explicit Advanced(QWidget* parent = nullptr);
};

} // namespace TWB::GUI::Settings
