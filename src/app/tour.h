#pragma once

#include <QDir>

#include <functional>

class Dialog;

namespace k7 {
class Simulator;
}

/// Drives the window through the whole trade by pressing its widgets, against a simulated module:
/// each step compares what came of it. Takes about half a minute. It works with the settings of the
/// tool as a person would, so the last folders are others afterwards.
///
/// `report` gets a line for each step. A picture of each page is saved to `folder`. False when a
/// comparison did not hold or a picture could not be saved.
bool runTour(Dialog &dialog, k7::Simulator &simulator, const QDir &folder,
             const std::function<void(const QString &line)> &report);
