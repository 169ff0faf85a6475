#include "assistant/hex_spin_box.h"
#include "assistant/serial_set.h"
#include "serial/system_ports.h"

#include <QComboBox>
#include <QLineEdit>
#include <QPushButton>
#include <QSerialPortInfo>
#include <QSignalSpy>
#include <QtTest>

namespace {

/// The dialog's combo box that offers `text`.
QComboBox *comboWith(const SerialSet &set, const QString &text)
{
    for (auto *combo : set.findChildren<QComboBox *>())
        if (combo->findText(text) >= 0)
            return combo;
    return nullptr;
}

void click(const SerialSet &set, const QString &text)
{
    for (auto *button : set.findChildren<QPushButton *>())
        if (button->text() == text)
            button->click();
}

} // namespace

class TestSettingsDialog : public QObject
{
    Q_OBJECT

private slots:
    void onlyConfirmedEditsCount()
    {
        SerialSet set;
        set.begin(systemPorts());
        QCOMPARE(set.settings().baudRate, 115200);
        QCOMPARE(set.settings().header1, quint8(0x5A));
        QCOMPARE(set.settings().header2, quint8(0xA5));
        QVERIFY(!set.settings().crcEnabled);
        const auto ports = QSerialPortInfo::availablePorts();
        QCOMPARE(set.settings().portName,
                 ports.isEmpty() ? QString("Refresh") : ports.last().portName());
        for (const char *rate : {"1200", "2400", "4800", "9600", "19200", "38400", "56000", "57600",
                                 "128000", "230400", "460800", "921600", "6250000"})
            QVERIFY2(comboWith(set, rate), rate);
        QSignalSpy accepted(&set, &SerialSet::accepted);
        set.show();
        comboWith(set, "460800")->setCurrentText("460800");
        click(set, "取消");
        QVERIFY(!set.isVisible());
        QCOMPARE(set.settings().baudRate, 115200);
        QCOMPARE(comboWith(set, "460800")->currentText(), QString("460800"));
        QCOMPARE(accepted.count(), 0);
        set.show();
        click(set, "确定");
        QCOMPARE(accepted.count(), 1);
        QCOMPARE(set.settings().baudRate, 460800);
    }

    void offeredPortsStandAfterTheListedOnes()
    {
        SerialSet set;
        set.begin(systemPorts());
        set.offerPorts({"/dev/one", "/dev/two"});
        QComboBox *ports = comboWith(set, "Refresh");
        QCOMPARE(ports->itemText(ports->count() - 2), QString("/dev/one"));
        QCOMPARE(ports->currentText(), QString("/dev/two"));
        comboWith(set, "9600")->setCurrentText("9600");
        set.usePort("/dev/one");
        QCOMPARE(set.settings().portName, QString("/dev/one"));
        QCOMPARE(set.settings().baudRate, 115200); // what else was edited waits to be confirmed
        // Only Refresh lists the ports anew.
        ports->addItem("gone");
        ports->setCurrentText("gone");
        emit ports->activated(ports->currentIndex());
        QVERIFY(ports->findText("gone") >= 0);
        const int count = ports->count() - 1;
        ports->setCurrentText("Refresh");
        emit ports->activated(0);
        QCOMPARE(ports->itemText(0), QString("Refresh"));
        QCOMPARE(ports->findText("gone"), -1);
        QCOMPARE(ports->count(), count);
        QCOMPARE(ports->currentText(), QString("/dev/two"));
    }

    void hexSpinBoxShowsAndAcceptsHexadecimal()
    {
        // A digit that is too much is refused, and so is what is none.
        for (const auto &[typed, shown] : {std::pair("ff0f", "FF0F"),
                                           {"0xaB", "AB"},
                                           {"7FFFFFFF", "7FFFFFFF"},
                                           {"80000000", "8000000"},
                                           {"1g2", "12"}}) {
            HexSpinBox box;
            box.setRange(0, 0x7FFFFFFF);
            box.setValue(1);
            box.selectAll();
            QTest::keyClicks(&box, typed);
            QTest::keyClick(&box, Qt::Key_Return);
            QCOMPARE(box.value(), QString(shown).toInt(nullptr, 16));
            QCOMPARE(box.text(), QString(shown));
        }
    }
};

QTEST_MAIN(TestSettingsDialog)
#include "tst_settings_dialog.moc"
