#pragma once

#include <QDir>

#include <functional>

class Dialog;

namespace k7 {
class ScreenWindow;
class SharedTime;
class Simulator;
} // namespace k7

/// How many of the comparisons held.
struct TourResult
{
    int held;
    int all;
};

/// Drives the window through the whole trade by pressing its widgets, against a simulated module
/// that is as slow as a real one: each step compares what came of it. Takes less than a minute. It
/// works with the settings of the tool as a person would, so the last folders are others
/// afterwards.
///
/// Window and module have their time from `time`. `report` gets a line for each step, which says
/// what was compared with what. A picture of each page is saved to `folder`, and one of `screen`
/// after each download that shows something; a comparison whose picture cannot be saved does not
/// hold.
TourResult runTour(Dialog &dialog, k7::Simulator &simulator, const k7::SharedTime &time,
                   k7::ScreenWindow &screen, const QDir &folder,
                   const std::function<void(const QString &line)> &report);
