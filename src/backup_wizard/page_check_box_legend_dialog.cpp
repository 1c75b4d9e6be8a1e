#include "backup_wizard/page_check_box_legend_dialog.h"

#include "frame/application.h"

#include <QFormLayout>
#include <QLabel>

namespace TWB::GUI {

PageCheckBoxLegendDialog::PageCheckBoxLegendDialog(QWidget* parent)
    : QDialog(parent)
{
    setWindowTitle(QStringLiteral("%1 %2").arg(Application::applicationName(), tr("Legend")));
    init();
    connect(this, &QDialog::rejected, this, &QDialog::close);
}

void PageCheckBoxLegendDialog::init()
{
    const QList<QPair<int, QString>> states = {
        {2,
            tr("The folder is selected, including all the subitems. All newly created subitems will automatically be "
               "included.")},
        {0, tr("The folder is not selected and no subitems are selected within the folder.")},
        {1,
            tr("The folder is included, and some subitems are excluded. All newly created subitems will "
               "automatically be included.")},
        {1001,
            tr("The folder itself is not included but some subitems are included. All newly created subitems will "
               "not be included within this folder, but will be included within the selected subfolders.")},
    };
    auto* layout = new QFormLayout(this);
    layout->setLabelAlignment(Qt::AlignTop);
    for (const auto& state : states) {
        auto* picture = new QLabel(this);
        auto* text = new QLabel(state.second, this);
        text->setWordWrap(true);
        // A wrapped label does not tell the dialog how tall it gets: fix its width and give it the
        // height that width needs.
        constexpr int textWidth = 400;
        text->setFixedWidth(textWidth);
        text->setMinimumHeight(text->heightForWidth(textWidth));
        layout->addRow(picture, text);
        rows.insert(state.first, {picture, text});
    }
}

void PageCheckBoxLegendDialog::setPixmapLegend(int state, const QPixmap& pixmap)
{
    if (rows.contains(state))
        rows.value(state).first->setPixmap(pixmap);
}

QString PageCheckBoxLegendDialog::legendText(int state) const
{
    return rows.contains(state) ? rows.value(state).second->text() : QString();
}

} // namespace TWB::GUI
