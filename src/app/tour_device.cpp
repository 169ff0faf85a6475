#include "app/tour_person.h"

#include "assistant/serial_set.h"

#include <QCheckBox>
#include <QLineEdit>
#include <QSpinBox>
#include <QTextEdit>

namespace {

QString shown(TourPerson &person, const char *lineEdit)
{
    return person.find<QLineEdit>(lineEdit)->text();
}

bool ports(TourPerson &person)
{
    const QList<SerialSet *> sets = person.dialog().findChildren<SerialSet *>();
    return sets.size() == 2 && sets.at(0)->settings().portName == person.simulator().uartPath() &&
           sets.at(1)->settings().portName == person.simulator().ed2Path();
}

bool version(TourPerson &person)
{
    const k7::Module &module = person.module();
    const int version = module.vp(0x0F);
    const QString expected =
        QString::asprintf("GUI:V%x.%x OS:V%x.%x", version >> 12, version >> 8 & 0xF,
                          version >> 4 & 0xF, version & 0xF);
    const QString id = QString::asprintf("%04x%04x%04x%04x", module.vp(0), module.vp(1),
                                         module.vp(2), module.vp(3));
    return person.pressUntil("readVersion", [&] {
        return shown(person, "displayVersion") == expected;
    }) && person.pressUntil("readDeviceID", [&] { return shown(person, "displayDeviceID") == id; });
}

bool settings(TourPerson &person)
{
    // Other header bytes, a CRC, another rate: nothing is understood unless both sides agree.
    const k7::ModuleSettings usual = person.module().settings();
    k7::ModuleSettings other = usual;
    other.format = {0x12, 0x34, true};
    other.uartRate = 128000;
    person.simulator().configure(other);
    const auto read = [&person] {
        person.find<QLineEdit>("displayVersion")->clear();
        return person.pressUntil("readVersion",
                                 [&] { return !shown(person, "displayVersion").isEmpty(); });
    };
    const auto edit = [](SerialSet &set, const k7::ModuleSettings &to) {
        set.setBaudText(to.uartRate);
        const auto boxes = set.findChildren<QSpinBox *>();
        boxes.at(0)->setValue(to.format.header1);
        boxes.at(1)->setValue(to.format.header2);
        set.findChild<QCheckBox *>()->setChecked(to.format.crcEnabled);
    };
    person.confirm("serialSet", [&](SerialSet &set) { edit(set, other); });
    const bool isUnderstood = read();
    person.simulator().configure(usual);
    person.confirm("serialSet", [&](SerialSet &set) { edit(set, usual); });
    return isUnderstood && read();
}

bool ed2Settings(TourPerson &person)
{
    // The link starts at 115200; what its dialog shows counts once it is confirmed.
    person.confirm("serialSet_2");
    return person.dialog().findChildren<SerialSet *>().at(1)->settings().baudRate == 6250000;
}

bool registers(TourPerson &person)
{
    person.select("serialCmd", "Write the register");
    person.set("regPage", 2);
    person.set("regVpAddr", 0xFE);
    person.check("hexMode", true);
    person.type("ChannelEdit0", "AB CD");
    if (!person.pressUntil("sendCmd", [&] { return person.module().registerAt(2, 0xFF) == 0xCD; }))
        return false;
    person.select("serialCmd", "Read the register");
    person.set("regVpLen", 2);
    return person.module().registerAt(2, 0xFE) == 0xAB && person.pressUntil("sendCmd", [&] {
        return person.find<QTextEdit>("displayText")->toPlainText() == "0xAB 0xCD";
    });
}

bool vpWords(TourPerson &person)
{
    person.select("serialCmd", "Write the VP");
    person.set("regVpAddr", 0x2000);
    person.type("ChannelEdit0", "0123 4567 89ab cdef");
    if (!person.pressUntil("sendCmd", [&] { return person.module().vp(0x2003) == 0xCDEF; }))
        return false;
    person.select("serialCmd", "Read the VP");
    person.set("regVpLen", 4);
    return person.module().vp(0x2000) == 0x0123 && person.pressUntil("sendCmd", [&] {
        return person.find<QTextEdit>("displayText")->toPlainText() ==
               "0x0123 0x4567 0x89AB 0xCDEF";
    });
}

bool freeForm(TourPerson &person)
{
    person.select("serialCmd", "Since writing instruction");
    person.type("ChannelEdit0", "5AA5 04 83 2002 01");
    return person.pressUntil("sendCmd", [&] {
        return person.find<QTextEdit>("receiveText")
            ->toPlainText()
            .endsWith("5aa50483200201\n5aa50683200201"
                      "89ab");
    });
}

bool curve(TourPerson &person)
{
    person.select("serialCmd", "Curve of the cache area");
    person.check("channel0", true);
    person.check("channel1", true);
    person.type("ChannelEdit0", "0001 0002 0003");
    person.type("ChannelEdit1", "0100 0200 0300");
    return person.pressUntil("sendCmd", [&] {
        return person.module().curve(0) == QVector<quint16>{1, 2, 3} &&
               person.module().curve(1) == QVector<quint16>{0x100, 0x200, 0x300};
    });
}

bool norFlash(TourPerson &person)
{
    // Four words of VP memory into the flash, and back to other words.
    person.set("norFlashAddr", 0x012345);
    person.set("norVp", 0x2000);
    person.set("norLength", 4);
    const QByteArray words = QByteArray::fromHex("0123456789ABCDEF");
    if (!person.pressUntil("writeNorFlash",
                           [&] { return person.module().flash().read(2 * 0x012345, 8) == words; }))
        return false;
    person.set("norVp", 0x3000);
    return person.pressUntil("readNorFlash", [&] {
        return person.module().vp(0x3003) == 0xCDEF;
    }) && person.module().vp(0x3000) == 0x0123;
}

bool music(TourPerson &person)
{
    person.set("musicPlayStart", 2);
    person.set("musicPlayCount", 3);
    person.set("musicPlayVolume", 64);
    const auto plays = [&person](int position, int count, int volume) {
        const k7::Music music = person.module().music();
        return music.position == position && music.count == count && music.volume == volume;
    };
    return person.pressUntil("musicPlayPlay", [&] { return plays(2, 3, 64); }) &&
           person.pressUntil("musicPlayStop", [&] { return plays(0, 0, 0); });
}

bool backlight(TourPerson &person)
{
    const auto write = [&person](int normal, int standby, int seconds) {
        person.set("normalLight_2", normal);
        person.set("standbyLight_2", standby);
        person.set("lightTime_2", seconds);
        return person.pressUntil("writeLedConfig", [&] {
            return person.module().vp(0x82) == normal * 256 + standby &&
                   person.module().vp(0x83) == seconds;
        });
    };
    if (!write(40, 10, 300))
        return false;
    for (const char *box : {"normalLight_2", "standbyLight_2", "lightTime_2"})
        person.set(box, 0);
    const bool isRead = person.pressUntil("readLedConfig", [&] {
        return person.value("normalLight_2") == 40 && person.value("standbyLight_2") == 10 &&
               person.value("lightTime_2") == 300;
    });
    return write(100, 20, 60) && isRead;
}

bool deviceConfig(TourPerson &person)
{
    const auto choose = [&person](bool isOn) {
        person.click(isOn ? "sdStatusOpen_2" : "sdStatusClose_2");
        person.click(isOn ? "touchVoiceOpen_2" : "touchVoiceClose_2");
        person.click(isOn ? "touchLightOpen_2" : "touchLightClose_2");
        person.click(isOn ? "displayDirection270_2" : "displayDirection0_2");
    };
    choose(true);
    if (!person.pressUntil("writeConfig", [&] { return person.module().vp(0x81) == 0x001F; }))
        return false;
    choose(false);
    const bool isRead = person.pressUntil("readConfig", [&] {
        return person.isChecked("sdStatusOpen_2") && person.isChecked("touchVoiceOpen_2") &&
               person.isChecked("touchLightOpen_2") && person.isChecked("displayDirection270_2");
    });
    choose(false);
    return person.pressUntil("writeConfig", [&] { return person.module().vp(0x81) == 0; }) &&
           isRead;
}

bool nameAndVoltage(TourPerson &person)
{
    person.module().setVp(0x30, 0x8000);
    return person.pressUntil("readSdName", [&] {
        return shown(person, "sdDownloadName") == "ZOLT_SET";
    }) && person.pressUntil("readVccVoltage", [&] { return person.value("vccVoltage") == 2400; });
}

bool resets(TourPerson &person)
{
    const int resets = person.module().resets();
    const int restarts = person.module().restarts();
    return person.pressUntil("resetK7", [&] { return person.module().resets() == resets + 1; }) &&
           person.module().registerAt(2, 0xFF) == 0 &&
           person.pressUntil("resetSystem",
                             [&] { return person.module().restarts() == restarts + 1; }) &&
           person.module().resets() == resets + 1;
}

} // namespace

QVector<TourStop> deviceStops()
{
    return {
        {"ports", ports, "chosen ports with those of the module", nullptr, nullptr},
        {"version", version, "shown version and device ID with the module's words", "tab_9",
         nullptr},
        {"UART2 settings", settings,
         "version read with other header, CRC and rate with nothing read", nullptr, nullptr},
        {"ED2 settings", ed2Settings, "confirmed rate with 6250000", nullptr, nullptr},
        {"registers", registers, "module's registers with bytes written, and view with them",
         nullptr, nullptr},
        {"VP memory", vpWords, "module's words with words written, and view with them", nullptr,
         nullptr},
        {"free form", freeForm, "log with the bytes sent and the module's reply", nullptr, nullptr},
        {"curve", curve, "module's samples of two channels with those typed", "tab_4", nullptr},
        {"NOR flash", norFlash, "flash with VP words, and other VP words with the flash", nullptr,
         nullptr},
        {"music", music, "what the module plays with the controls, and silence", nullptr, nullptr},
        {"backlight", backlight, "module's words with the controls, and read back", nullptr,
         nullptr},
        {"device config", deviceConfig, "module's word with the controls, and read back", nullptr,
         nullptr},
        {"SD name, voltage", nameAndVoltage, "shown values with the module's words", nullptr,
         nullptr},
        {"resets", resets, "module's counts of resets and restarts, registers with 0", nullptr,
         nullptr},
    };
}
