#pragma once

#include "common/notices.h"

class QWidget;

/// Shows notices in warning boxes above `parent`.
class MessageBoxNotices final : public Notices
{
public:
    /// `isEnglish` is looked at for every notice.
    MessageBoxNotices(QWidget *parent, const bool &isEnglish)
        : m_parent(parent), m_isEnglish(isEnglish)
    {
    }

    void warn(const Text &text, const Text *detail, const QString &argument) override;

private:
    QWidget *m_parent;
    const bool &m_isEnglish;
};
