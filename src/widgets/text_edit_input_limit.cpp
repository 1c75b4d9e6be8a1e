#include "widgets/text_edit_input_limit.h"

#include <QTextCursor>

namespace TWB::GUI {

TextEditInputLimit::TextEditInputLimit(int limit, QWidget* parent)
    : QTextEdit(parent)
    , limit(qMax(0, limit))
{
    setAcceptRichText(false);
    connect(this, &QTextEdit::textChanged, this, &TextEditInputLimit::onTextChanged);
}

TextEditInputLimit::~TextEditInputLimit() = default;

void TextEditInputLimit::setInputLimit(int limit)
{
    this->limit = qMax(0, limit);
}

void TextEditInputLimit::onTextChanged()
{
    // Trimming changes the text again; that inner change is this one's and reports nothing of its own.
    if (trimming)
        return;
    const QString text = toPlainText();
    if (text.length() == limit + 1) {
        // One typed character too many: take back exactly that one, where the user typed it.
        trimming = true;
        QTextCursor cursor = textCursor();
        cursor.deletePreviousChar();
        setTextCursor(cursor);
        trimming = false;
    } else if (text.length() > limit + 1) {
        trimming = true;
        setPlainText(text.left(limit));
        moveCursor(QTextCursor::End);
        trimming = false;
    }
    Q_EMIT numberOfCharactersChanged(toPlainText().length());
}

} // namespace TWB::GUI
