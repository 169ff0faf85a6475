#include "app/message_box_notices.h"

#include <QMessageBox>

void MessageBoxNotices::warn(const Text &text, const Text *detail)
{
    QMessageBox box(QMessageBox::Warning, texts::boxTitle, text.in(m_isEnglish), QMessageBox::Ok,
                    m_parent);
    if (detail)
        box.setInformativeText(detail->in(m_isEnglish));
    box.exec();
}
