#pragma once

#include "twbconsole_export.h"

#include <QTextEdit>

namespace TWB::GUI {

/// A plain-text edit that refuses text beyond a number of characters, typed or pasted.
class TWBCONSOLE_EXPORT TextEditInputLimit : public QTextEdit
{
    Q_OBJECT
    Q_DISABLE_COPY(TextEditInputLimit)
public:
    explicit TextEditInputLimit(int limit, QWidget* parent = nullptr);
    ~TextEditInputLimit() override;

    /// Applies at the next change of the text.
    void setInputLimit(int limit);
    int inputLimit() const { return limit; }

Q_SIGNALS:
    void numberOfCharactersChanged(int count);

private Q_SLOTS:
    void onTextChanged();

private:
    int limit;
    bool trimming = false;
};

} // namespace TWB::GUI
