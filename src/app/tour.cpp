#include "app/tour.h"

#include "app/tour_person.h"
#include "simulator/screen_window.h"

namespace {

bool save(QWidget &window, const QDir &folder, const char *name)
{
    return !name || window.grab().save(folder.filePath(QString(name) + ".png"));
}

} // namespace

TourResult runTour(Dialog &dialog, k7::Simulator &simulator, const k7::SharedTime &time,
                   k7::ScreenWindow &screen, const QDir &folder,
                   const std::function<void(const QString &line)> &report)
{
    const QVector<TourStop> stops = deviceStops() + downloadStops() + fileStops();
    TourResult result{0, stops.size()};
    TourPerson person(dialog, simulator, time);
    if (!person.isReady() || !folder.mkpath("."))
        return result;
    const QString before = dialog.language();
    dialog.applyLanguage(Language::english);
    for (const TourStop &stop : stops) {
        if (stop.page)
            person.show(stop.page);
        const bool holds = stop.run(person);
        const bool isSaved = save(dialog, folder, stop.page) && save(screen, folder, stop.screen);
        report(QString("%1  %2 %3")
                   .arg(holds && isSaved ? "held  " : "FAILED",
                        QString(stop.name).leftJustified(18), stop.compared));
        result.held += holds && isSaved ? 1 : 0;
    }
    if (!before.isEmpty())
        dialog.applyLanguage(before);
    return result;
}
