#include "serial/hex_spin_box.h"
#include "serial/serial_set.h"

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

QPushButton *button(const SerialSet &set, const QString &text)
{
    for (auto *candidate : set.findChildren<QPushButton *>())
        if (candidate->text() == text)
            return candidate;
    return nullptr;
}

} // namespace

class TestSettingsDialog : public QObject
{
    Q_OBJECT

private slots:
    void defaultsAreConfirmedFromTheStart()
    {
        SerialSet set;
        set.begin(SerialSet::systemPorts());
        QCOMPARE(set.settings().baudRate, 115200);
        QCOMPARE(set.settings().header1, quint8(0x5A));
        QCOMPARE(set.settings().header2, quint8(0xA5));
        QVERIFY(!set.settings().crcEnabled);
        const auto ports = QSerialPortInfo::availablePorts();
        QCOMPARE(set.settings().portName,
                 ports.isEmpty() ? QString("Refresh") : ports.last().portName());
    }

    void onlyConfirmedEditsCount()
    {
        SerialSet set;
        set.begin(SerialSet::systemPorts());
        QSignalSpy accepted(&set, &SerialSet::accepted);
        set.show();
        comboWith(set, "460800")->setCurrentText("460800");
        button(set, "取消")->click();
        QVERIFY(!set.isVisible());
        QCOMPARE(set.settings().baudRate, 115200);
        QCOMPARE(comboWith(set, "460800")->currentText(), QString("460800"));
        QCOMPARE(accepted.count(), 0);
        set.show();
        button(set, "确定")->click();
        QCOMPARE(accepted.count(), 1);
        QCOMPARE(set.settings().baudRate, 460800);
    }

    void refreshListsThePortsAnew()
    {
        SerialSet set;
        set.begin(SerialSet::systemPorts());
        set.offerPorts({"/dev/extra"});
        QComboBox *ports = comboWith(set, "Refresh");
        ports->addItem("gone");
        ports->setCurrentText("gone");
        emit ports->activated(ports->currentIndex());
        QVERIFY(ports->findText("gone") >= 0);
        ports->setCurrentText("Refresh");
        emit ports->activated(0);
        QCOMPARE(ports->itemText(0), QString("Refresh"));
        QCOMPARE(ports->findText("gone"), -1);
        QCOMPARE(ports->currentText(), QString("/dev/extra"));
    }

    void offeredPortsStandAfterTheListedOnes()
    {
        SerialSet set;
        set.begin(SerialSet::systemPorts());
        set.offerPorts({"/dev/one", "/dev/two"});
        QComboBox *ports = comboWith(set, "Refresh");
        QCOMPARE(ports->itemText(ports->count() - 2), QString("/dev/one"));
        QCOMPARE(ports->currentText(), QString("/dev/two"));
        set.usePort("/dev/one");
        QCOMPARE(set.settings().portName, QString("/dev/one"));
    }

    void hexSpinBoxShowsAndAcceptsHexadecimal_data()
    {
        QTest::addColumn<QString>("typed");
        QTest::addColumn<int>("value");
        QTest::addColumn<QString>("shown");
        QTest::newRow("lower case") << "ff0f" << 0xFF0F << "FF0F";
        QTest::newRow("prefix") << "0xaB" << 0xAB << "AB";
        QTest::newRow("widest") << "7FFFFFFF" << 0x7FFFFFFF << "7FFFFFFF";
        QTest::newRow("too wide a digit is refused") << "80000000" << 0x8000000 << "8000000";
        QTest::newRow("no digit is refused") << "1g2" << 0x12 << "12";
    }

    void hexSpinBoxShowsAndAcceptsHexadecimal()
    {
        QFETCH(const QString, typed);
        HexSpinBox box;
        box.setRange(0, 0x7FFFFFFF);
        box.setValue(1);
        box.selectAll();
        QTest::keyClicks(&box, typed);
        QTest::keyClick(&box, Qt::Key_Return);
        QTEST(box.value(), "value");
        QTEST(box.text(), "shown");
    }
};

QTEST_MAIN(TestSettingsDialog)
#include "tst_settings_dialog.moc"
