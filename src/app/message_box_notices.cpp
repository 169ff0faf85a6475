#include "app/message_box_notices.h"

#include <QMessageBox>

void MessageBoxNotices::warn(const Text &text, const Text *detail, const QString &argument)
{
    const QString shown = text.in(m_isEnglish);
    QMessageBox box(QMessageBox::Warning, texts::boxTitle,
                    argument.isNull() ? shown : shown.arg(argument), QMessageBox::Ok, m_parent);
    box.setTextFormat(Qt::PlainText); // file names may look like markup
    if (detail)
        box.setInformativeText(detail->in(m_isEnglish));
    box.exec();
}
