// First paint of the tool against a bare dialog with as many children.

#include "app/dialog.h"
#include "bench/measure.h"

#include <QApplication>
#include <QElapsedTimer>
#include <QGroupBox>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QRadioButton>
#include <QSpinBox>

namespace {

/// Ends the program at the first paint, after it has printed the milliseconds since `start`.
class FirstPaint : public QObject
{
public:
    explicit FirstPaint(const QElapsedTimer &start) : m_start(start) {}

    bool eventFilter(QObject *, QEvent *event) override
    {
        if (event->type() == QEvent::Paint) {
            std::printf("%f\n", static_cast<double>(m_start.nsecsElapsed()) * 1e-6);
            std::fflush(stdout);
            std::_Exit(0);
        }
        return false;
    }

private:
    const QElapsedTimer &m_start;
};

/// 390 children of the kinds that the tool is made of.
void addBareChildren(QDialog &dialog)
{
    constexpr int children = 390;
    constexpr int perRow = 13;
    for (int i = 0; i < children; ++i) {
        QWidget *child = nullptr;
        switch (i % 6) {
        case 0:
            child = new QLabel("Label", &dialog);
            break;
        case 1:
            child = new QPushButton("Button", &dialog);
            break;
        case 2:
            child = new QRadioButton("Choice", &dialog);
            break;
        case 3:
            child = new QSpinBox(&dialog);
            break;
        case 4:
            child = new QLineEdit(&dialog);
            break;
        default:
            child = new QGroupBox("Group", &dialog);
        }
        child->setGeometry(i % perRow * 78, i / perRow * 21, 74, 20);
    }
}

int showUntilPainted(QDialog &dialog, const QElapsedTimer &start)
{
    FirstPaint firstPaint(start);
    dialog.installEventFilter(&firstPaint);
    dialog.show();
    return QApplication::exec();
}

} // namespace

int main(int argc, char *argv[])
{
    QElapsedTimer start;
    start.start();
    QApplication application(argc, argv);
    QApplication::setStyle("Fusion");
    if (argc > 1 && QByteArray(argv[1]) == "tool") {
        Dialog dialog;
        return showUntilPainted(dialog, start);
    }
    if (argc > 1) {
        QDialog dialog;
        dialog.setFixedSize(1017, 645);
        addBareChildren(dialog);
        return showUntilPainted(dialog, start);
    }

    QVector<double> ratios;
    for (int i = 0; i < 21; ++i)
        ratios.append(measure::inNewProcess("tool") / measure::inNewProcess("bare"));
    measure::report("PERF_START", measure::median(ratios), 1.20);
    return 0;
}
