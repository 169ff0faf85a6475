#pragma once

#include <QImage>
#include <QPoint>
#include <QSize>

/// A picture as it would look on a screen, enlarged or reduced, seen through a canvas.
struct PicturePreview
{
    QImage canvas; ///< 24 bits a pixel; grey where the picture does not reach
    /// How far the picture can be moved; 0 where it fits the canvas.
    int maxX = 0;
    int maxY = 0;
};

/// `picture` stretched to `percent` of `screen`, with its pixel `offset` (at most what the result
/// tells) at the top left of a canvas of `canvasSize`. A screen or zoom without pixels shows
/// nothing of it.
PicturePreview drawPreview(const QImage &picture, const QSize &screen, int percent,
                           const QPoint &offset, const QSize &canvasSize);
