#include "wizard/plan_wizard_base.h"

#include "widgets/image_manager.h"

#include <QAbstractButton>
#include <QShowEvent>

namespace TWB::GUI {

namespace {
// The wizard background in the image manager's numbering.
const int backgroundImage = 2;
} // namespace

PlanWizardBase::PlanWizardBase(int planType, QWidget* parent)
    : BaseWizard(parent)
    , m_planType(planType)
{
    setPixmap(QWizard::BackgroundPixmap, ImageManager::image(backgroundImage));
    setWizardStyle(QWizard::MacStyle);
    setButtonLayout(
        {QWizard::Stretch, QWizard::CancelButton, QWizard::BackButton, QWizard::NextButton, QWizard::FinishButton});
    setMinimumWidth(655);
    setMinimumHeight(ImageManager::imageSize(backgroundImage).height());
}

int PlanWizardBase::exec()
{
    static bool executed = false;
    if (executed)
        return 0;
    executed = true;
    const int result = QDialog::exec();
    executed = false;
    return result;
}

void PlanWizardBase::resizeWizardPages()
{
    QSize size = minimumSize();
    const auto ids = pageIds();
    for (int id : ids) {
        if (QWizardPage* p = page(id)) {
            size = size.expandedTo(p->sizeHint());
            m_widestPage = qMax(m_widestPage, p->sizeHint().width());
        }
    }
    setMinimumSize(size);
}

void PlanWizardBase::showEvent(QShowEvent* event)
{
    BaseWizard::showEvent(event);
    // Beside the pages stand the side artwork and the frames, which the pages' own hints do not
    // count: widen the window once it is laid out, so that the widest page is never squeezed.
    QWizardPage* shown = currentPage();
    if (!shown || m_widestPage <= 0)
        return;
    const int needed = m_widestPage + (width() - shown->width());
    if (needed > minimumWidth())
        setMinimumWidth(needed);
}

} // namespace TWB::GUI
