// First paint of the tool against two bare dialogs: one with as many children of six simple kinds,
// and one with the very controls that the tool has.

#include "app/dialog.h"
#include "bench/measure.h"

#include <QApplication>
#include <QCheckBox>
#include <QComboBox>
#include <QDialogButtonBox>
#include <QElapsedTimer>
#include <QGroupBox>
#include <QLabel>
#include <QLineEdit>
#include <QProgressBar>
#include <QPushButton>
#include <QRadioButton>
#include <QSpinBox>
#include <QTabWidget>
#include <QTableWidget>
#include <QTextBrowser>

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

template<typename Control>
QWidget *make(QWidget *parent)
{
    return new Control(parent);
}

/// The controls of the tool, and how many of each; rows without columns, and texts that are empty.
void addControlsOfTheTool(QDialog &dialog)
{
    const std::pair<QWidget *(*)(QWidget *), int> kinds[] = {
        {make<QLabel>, 78},      {make<QPushButton>, 64}, {make<QRadioButton>, 55},
        {make<QSpinBox>, 44},    {make<QGroupBox>, 41},   {make<QCheckBox>, 23},
        {make<QLineEdit>, 14},   {make<QComboBox>, 13},   {make<QTableWidget>, 6},
        {make<QProgressBar>, 5}, {make<QTextBrowser>, 4}, {make<QTabWidget>, 4},
        {make<QTextEdit>, 2},    {make<QWidget>, 13},     {make<QDialogButtonBox>, 2},
    };
    int i = 0;
    for (const auto &[makeControl, count] : kinds)
        for (int each = 0; each < count; ++each, ++i)
            makeControl(&dialog)->setGeometry(i % 13 * 78, i / 13 * 21, 74, 20);
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
        if (QByteArray(argv[1]) == "same")
            addControlsOfTheTool(dialog);
        else
            addBareChildren(dialog);
        return showUntilPainted(dialog, start);
    }

    QVector<double> ratios;
    QVector<double> sameRatios;
    for (int i = 0; i < 41; ++i) {
        const double tool = measure::inNewProcess("tool");
        ratios.append(tool / measure::inNewProcess("bare"));
        sameRatios.append(tool / measure::inNewProcess("same"));
    }
    measure::report("PERF_START", measure::median(ratios), 1.10);
    measure::report("PERF_START_SAME_CONTROLS", measure::median(sameRatios), 1.10);
    return 0;
}
