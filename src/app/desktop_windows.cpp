#include "app/desktop.h"

#include <QGuiApplication>

void prepareDesktop()
{
    // Qt would show 125 % as 100 and 150 % as 200, which many screens have no room for.
    QGuiApplication::setHighDpiScaleFactorRoundingPolicy(
        Qt::HighDpiScaleFactorRoundingPolicy::PassThrough);
}
