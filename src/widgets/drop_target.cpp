#include "widgets/drop_target.h"

#include <QAbstractScrollArea>
#include <QDropEvent>
#include <QMimeData>
#include <QTimer>
#include <QUrl>

namespace {

QStringList pathsIn(const QMimeData *data)
{
    QStringList paths;
    for (const QUrl &url : data->urls())
        if (url.isLocalFile())
            paths.append(url.toLocalFile());
    return paths;
}

} // namespace

DropTarget::DropTarget(QAbstractScrollArea &view,
                       std::function<void(const QStringList &paths)> drop)
    : QObject(&view), m_drop(std::move(drop))
{
    view.viewport()->setAcceptDrops(true);
    view.viewport()->installEventFilter(this);
}

bool DropTarget::eventFilter(QObject *watched, QEvent *event)
{
    if (event->type() != QEvent::DragEnter && event->type() != QEvent::DragMove &&
        event->type() != QEvent::Drop)
        return QObject::eventFilter(watched, event);
    auto *drag = static_cast<QDropEvent *>(event);
    const QStringList paths = pathsIn(drag->mimeData());
    if (paths.isEmpty())
        return true;
    drag->acceptProposedAction();
    // Afterwards: where the drag began must not wait for a box.
    if (event->type() == QEvent::Drop)
        QTimer::singleShot(0, this, [this, paths] { m_drop(paths); });
    return true;
}
