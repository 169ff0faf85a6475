#include "common/qt_remarks.h"

#include <QGuiApplication>

#include <cstdio>

void hideQtRemarks()
{
    qInstallMessageHandler([](QtMsgType type, const QMessageLogContext &context,
                              const QString &text) {
        // What keeps a window from opening is a mere warning of Qt's platforms, before there is
        // one.
        const bool isOfStart = qstrncmp(context.category, "qt.qpa.", 7) == 0 &&
                               type == QtWarningMsg && QGuiApplication::platformName().isEmpty();
        if (isOfStart || type == QtCriticalMsg || type == QtFatalMsg)
            std::fprintf(stderr, "%s\n", text.toLocal8Bit().constData());
    });
}
