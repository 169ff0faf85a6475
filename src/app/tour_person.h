#pragma once

#include "app/dialog.h"
#include "app/message_boxes.h"
#include "app/person.h"
#include "common/event_loop.h"
#include "simulator/direct_link.h"
#include "simulator/shared_time.h"
#include "simulator/simulator.h"

#include <QTemporaryDir>
#include <QVector>

/// The person at the window, with a module beside it and a folder for the files of the trade.
class TourPerson : public Person
{
public:
    TourPerson(Dialog &dialog, k7::Simulator &simulator, const k7::SharedTime &time)
        : m_dialog(dialog), m_simulator(simulator), m_time(time), m_boxes(k7::timeOf(time))
    {
    }

    QWidget &window() override { return m_dialog; }
    bool isReady() const { return m_files.isValid(); }
    Dialog &dialog() { return m_dialog; }
    k7::Simulator &simulator() { return m_simulator; }
    k7::Module &module() { return m_simulator.module(); }
    MessageBoxes &boxes() { return m_boxes; }

    /// Chooses `layout`, such as "K7UID2", for a module that has it.
    void useLayout(const QString &layout);

    /// Presses `button` and waits for a box; whether it says `text`, and was the only one.
    bool pressAndRead(const char *button, const QString &text);
    /// Presses `button` and waits until `isDone`, and until the exchange that brought it has ended.
    bool pressUntil(const char *button, const std::function<bool()> &isDone);
    /// Lets the time of window and module pass.
    void pass(int milliseconds);
    /// Has the tool check the file `path` against the module; whether it finds units, all equal.
    bool crcHolds(const QString &path);

    QString folder() const { return m_files.path(); }
    QString filePath(const QString &name) const { return m_files.filePath(name); }
    /// Writes a file, whose path this is.
    QString write(const QString &name, const QByteArray &content);
    QString write(const QString &name, const QImage &image);

private:
    Dialog &m_dialog;
    k7::Simulator &m_simulator;
    const k7::SharedTime &m_time;
    MessageBoxes m_boxes;
    QTemporaryDir m_files;
};

/// What a person does at one stop, and how the line about it reads.
struct TourStop
{
    const char *name;
    bool (*run)(TourPerson &person); ///< whether the comparison held
    const char *compared;
    const char *page;   ///< that is pictured, where one is
    const char *screen; ///< name of the picture of the module's screen, where it shows something
};

QVector<TourStop> deviceStops();
QVector<TourStop> downloadStops();
QVector<TourStop> fileStops();

/// `bytes` bytes that do not repeat within a flash block.
QByteArray tourPattern(int bytes);
QImage tourDrawing(const QSize &size, int hue);
/// The module's pixels of `image` by their definition, one after the other: none of the tool's
/// code.
QByteArray naivePixels(const QImage &image);
