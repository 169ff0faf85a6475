#pragma once

#include <QObject>
#include <QStringList>

#include <functional>

class QAbstractScrollArea;

/// Lets files and folders be dropped onto `view`; `drop` gets their paths in the order of the drag.
class DropTarget : public QObject
{
public:
    DropTarget(QAbstractScrollArea &view, std::function<void(const QStringList &paths)> drop);

    bool eventFilter(QObject *watched, QEvent *event) override;

private:
    const std::function<void(const QStringList &)> m_drop;
};
