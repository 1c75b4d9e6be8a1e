#pragma once

#include "twbconsole_export.h"

#include <QWidget>

class QLabel;

namespace TWB::GUI {

/// A small caption above a rule, to head a group of fields without a group box.
class TWBCONSOLE_EXPORT SectionLine : public QWidget
{
    Q_OBJECT
    Q_DISABLE_COPY(SectionLine)
public:
    explicit SectionLine(const QString& title, QWidget* parent = nullptr);
    ~SectionLine() override;

    QString title() const;
    QLabel* titleLabel() const { return label; }

private:
    QLabel* label; // owned as a child
};

} // namespace TWB::GUI
