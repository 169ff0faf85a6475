#include "app/message_box_notices.h"

#include <QMessageBox>

void MessageBoxNotices::warn(const Text &text, const Text *detail, const QString &argument)
{
    const auto shown = [&](const Text &part) {
        return part.in(m_isEnglish).replace("%1", argument);
    };
    QMessageBox box(QMessageBox::Warning, texts::boxTitle, shown(text), QMessageBox::Ok, m_parent);
    box.setTextFormat(Qt::PlainText); // file names may look like markup
    if (detail)
        box.setInformativeText(shown(*detail));
    box.exec();
}
