#include "assistant/serial_assistant_page.h"

#include "ui_serial_assistant_page.h"

#include "common/file_dialogs.h"
#include "common/notices.h"
#include "common/replace_file.h"
#include "serial/data_text.h"
#include "serial/mirror_text.h"

#include <QClipboard>
#include <QFontDatabase>
#include <QGuiApplication>
#include <QLineEdit>
#include <QMenu>

namespace {

constexpr int gap = 8; ///< pixels between controls

} // namespace

/// A command kind: how it is laid out, what it prepares and what it starts.
struct SerialAssistantPage::Kind
{
    const char *text;
    const char *hint;
    Layout layout;
    bool (SerialAssistantPage::*start)();
};

const std::array<SerialAssistantPage::Kind, 6> SerialAssistantPage::kinds{{
    {"Write the register", "Writes the data bytes to the registers from the address on.",
     Layout::Register, &SerialAssistantPage::writeRegisters},
    {"Read the register", "Reads as many registers as the length says.", Layout::Register,
     &SerialAssistantPage::readRegisters},
    {"Write the VP", "Writes the data to VP memory: two bytes a word, high byte first.", Layout::Vp,
     &SerialAssistantPage::writeVp},
    {"Read the VP", "Reads as many VP words as the length says, 7D at most.", Layout::Vp,
     &SerialAssistantPage::readVp},
    {"Curve of the cache area", "Feeds the ticked channels: two bytes a sample, high byte first.",
     Layout::Curve, &SerialAssistantPage::sendCurve},
    {"Since writing instruction",
     "Sends the data exactly as they stand: no header, length or CRC is added.", Layout::DataOnly,
     &SerialAssistantPage::sendFreeForm},
}};

SerialAssistantPage::SerialAssistantPage(const PageContext &context, Engine &engine,
                                         QWidget *parent)
    : QWidget(parent)
    , m_context(context)
    , m_engine(engine)
    , m_ui(std::make_unique<Ui::SerialAssistantPage>())
{
    m_ui->setupUi(this);
    for (int c = 0; c < FrameBuilder::channels; ++c)
        m_channels.append({findChild<QCheckBox *>(QString("channel%1").arg(c)),
                           findChild<QLineEdit *>(QString("ChannelEdit%1").arg(c)),
                           findChild<QLabel *>(QString("channelLabel%1").arg(c))});
    QFont fixedFont = QFontDatabase::systemFont(QFontDatabase::FixedFont);
    fixedFont.setPixelSize(12);
    m_ui->receiveText->setFont(fixedFont);
    m_ui->displayText->setFont(fixedFont);
    // Lines of digits have no words, and looking for some takes most of the time of a fast stream.
    m_ui->receiveText->setWordWrapMode(QTextOption::WrapAnywhere);
    m_ui->receiveText->document()->setMaximumBlockCount(TrafficLog::maxLines);
    for (const Kind &kind : kinds)
        m_ui->serialCmd->addItem(kind.text);
    // Also the fields of the spin boxes. Enter anywhere else sends nothing: it may be a stray one.
    for (const auto *field : findChildren<QLineEdit *>())
        connect(field, &QLineEdit::returnPressed, m_ui->sendCmd, &QPushButton::click);

    connect(&engine.trafficLog(), &TrafficLog::linesReady, this,
            [this](const QStringList &lines) { m_ui->receiveText->append(lines.join('\n')); });
    m_ui->receiveText->setContextMenuPolicy(Qt::CustomContextMenu);
    connect(m_ui->receiveText, &QWidget::customContextMenuRequested, this,
            &SerialAssistantPage::showLogMenu);
    connect(&engine, &Engine::registersRead, this, [this] { show(View::Registers); });
    connect(&engine, &Engine::vpRead, this, [this] { show(View::Vp); });
    connect(&m_refresh, &PacedTrigger::fired, this, &SerialAssistantPage::refreshView);
}

SerialAssistantPage::~SerialAssistantPage() = default;

Engine::Range SerialAssistantPage::range() const
{
    return {m_ui->regPage->value(), m_ui->regVpAddr->value(), m_ui->regVpLen->value()};
}

std::optional<QByteArray> SerialAssistantPage::data() const
{
    return dataText::toBytes(m_ui->ChannelEdit0->text(), m_ui->hexMode->isChecked());
}

void SerialAssistantPage::readVp(int address, int words)
{
    m_ui->regVpAddr->setValue(address);
    m_ui->regVpLen->setValue(words);
    readVp();
}

void SerialAssistantPage::on_serialCmd_currentIndexChanged(int index)
{
    if (index < 0 || index >= static_cast<int>(kinds.size()))
        return;
    const Kind &kind = kinds[static_cast<size_t>(index)];
    m_ui->hintLabel->setText(kind.hint);
    apply(kind.layout);
}

void SerialAssistantPage::apply(Layout layout)
{
    const bool isCurve = layout == Layout::Curve;
    m_ui->channelLabel->setText(isCurve ? "Curve channels" : "Data to send");
    m_ui->channelLabel0->setText(isCurve ? "Channel0" : "Data");
    for (const Channel &channel : m_channels.mid(1)) {
        channel.box->setVisible(isCurve);
        channel.edit->setVisible(isCurve);
        channel.label->setVisible(isCurve);
    }

    // Where the other channels are hidden, the values get their room.
    QRect values = m_ui->displayText->geometry();
    values.setTop(isCurve ? m_channels.last().edit->geometry().bottom() + gap
                          : m_channels.at(1).edit->geometry().top());
    m_ui->displayText->setGeometry(values);

    // The others leave the range as it is: it is also what the values below are shown of.
    const bool isRegister = layout == Layout::Register;
    if (!isRegister && layout != Layout::Vp)
        return;
    m_ui->addrLabel->setText(isRegister ? "Reg 0x" : "VP Addr 0x");
    m_ui->lenLabel->setText(isRegister ? "Reg Len 0x" : "VP Len 0x");
    m_ui->regPage->setVisible(isRegister);
    m_ui->regPageLabel->setVisible(isRegister);
}

void SerialAssistantPage::on_sendCmd_clicked()
{
    for (const Kind &kind : kinds) {
        if (m_ui->serialCmd->currentText() != kind.text)
            continue;
        if (!(this->*kind.start)())
            m_context.notices.warn(texts::dataNotMeetRequirements);
    }
}

void SerialAssistantPage::on_clearReceiveLog_clicked()
{
    m_engine.trafficLog().clear();
    m_ui->receiveText->clear();
}

void SerialAssistantPage::showLogMenu(const QPoint &position)
{
    const std::unique_ptr<QMenu> menu(m_ui->receiveText->createStandardContextMenu());
    menu->addSeparator();
    menu->addAction(texts::copyAll.in(m_context.isEnglish), this, [this] {
        QGuiApplication::clipboard()->setText(m_ui->receiveText->toPlainText());
    });
    menu->addAction(texts::saveLog.in(m_context.isEnglish), this, &SerialAssistantPage::saveLog);
    menu->exec(m_ui->receiveText->viewport()->mapToGlobal(position));
}

void SerialAssistantPage::saveLog()
{
    const QString path = m_context.fileDialogs.saveFile(QString(), "*.txt;*.log");
    if (!path.isEmpty() && !replaceFile(path, m_engine.trafficLog().record().toUtf8()))
        m_context.notices.warn(texts::fileNotWritten);
}

bool SerialAssistantPage::writeRegisters()
{
    const auto bytes = data();
    return bytes && m_engine.writeRegisters([this] { return range(); }, *bytes);
}

bool SerialAssistantPage::readRegisters()
{
    m_engine.readRegisters([this] { return range(); });
    return true;
}

bool SerialAssistantPage::writeVp()
{
    const auto words = dataText::toWords(m_ui->ChannelEdit0->text(), m_ui->hexMode->isChecked());
    return words && m_engine.writeVp(range().address, *words);
}

bool SerialAssistantPage::readVp()
{
    m_engine.readVp([this] { return range(); });
    return true;
}

bool SerialAssistantPage::sendCurve()
{
    std::array<QVector<quint16>, FrameBuilder::channels> samples;
    quint8 mask = 0;
    for (int c = 0; c < FrameBuilder::channels; ++c) {
        const Channel &channel = m_channels.at(c);
        if (!channel.box->isChecked())
            continue;
        const auto words = dataText::toWords(channel.edit->text(), m_ui->hexMode->isChecked());
        if (!words)
            return false;
        samples[static_cast<size_t>(c)] = *words;
        mask = static_cast<quint8>(mask | 1 << c);
    }
    return m_engine.sendCurve(samples, mask);
}

bool SerialAssistantPage::sendFreeForm()
{
    if (!data())
        return false;
    // The text may have been changed by the time that it goes out; then nothing does.
    m_engine.sendFreeForm([this] { return data().value_or(QByteArray()); });
    return true;
}

void SerialAssistantPage::show(View view)
{
    m_view = view;
    m_refresh.request();
}

void SerialAssistantPage::refreshView()
{
    const Engine::Range shown = range();
    const QString text =
        m_view == View::Vp
            ? mirrorText::vpWords(m_engine.mirrors(), shown.address, shown.length)
            : mirrorText::registers(m_engine.mirrors(), shown.page, shown.address, shown.length);
    if (m_ui->displayText->toPlainText() != text)
        m_ui->displayText->setPlainText(text);
}
