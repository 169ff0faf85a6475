#include "app/tour.h"

#include "app/tour_person.h"
#include "simulator/screen_window.h"

namespace {

bool save(QWidget &window, const QDir &folder, const char *name)
{
    return !name || window.grab().save(folder.filePath(QString(name) + ".png"));
}

} // namespace

bool runTour(Dialog &dialog, k7::Simulator &simulator, k7::ScreenWindow &screen, const QDir &folder,
             const std::function<void(const QString &line)> &report)
{
    TourPerson person(dialog, simulator);
    if (!person.isReady() || !folder.mkpath("."))
        return false;
    const QString before = dialog.language();
    dialog.applyLanguage(Language::english);
    bool allHeld = true;
    for (const TourStop &stop : deviceStops() + downloadStops() + fileStops()) {
        if (stop.page)
            person.show(stop.page);
        const bool held = stop.run(person);
        const bool isSaved = save(dialog, folder, stop.page) && save(screen, folder, stop.screen);
        report(QString("%1  %2 %3")
                   .arg(held && isSaved ? "held  " : "FAILED", QString(stop.name).leftJustified(18),
                        stop.compared));
        allHeld = allHeld && held && isSaved;
    }
    if (!before.isEmpty())
        dialog.applyLanguage(before);
    return allHeld;
}
