#include "serial/serial_assistant_page.h"

#include "ui_serial_assistant_page.h"

#include "common/big_endian.h"
#include "common/file_dialogs.h"
#include "common/notices.h"
#include "common/replace_file.h"
#include "download/download_session.h"
#include "serial/data_text.h"
#include "serial/frame_builder.h"
#include "serial/mirror_text.h"
#include "serial/reply_receiver.h"
#include "serial/traffic_log.h"

#include <QClipboard>
#include <QFontDatabase>
#include <QGuiApplication>
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
    bool (SerialAssistantPage::*prepare)();
    int commandType;
};

const std::array<SerialAssistantPage::Kind, 6> SerialAssistantPage::kinds{{
    {"Write the register", "Writes the data bytes to the registers from the address on.",
     Layout::Register, &SerialAssistantPage::prepareRegisters, commandType::writeRegister},
    {"Read the register", "Reads as many registers as the length says.", Layout::Register,
     &SerialAssistantPage::prepareNothing, commandType::readRegister},
    {"Write the VP", "Writes the data to VP memory: two bytes a word, high byte first.", Layout::Vp,
     &SerialAssistantPage::prepareVp, commandType::writeVp},
    {"Read the VP", "Reads as many VP words as the length says, 7D at most.", Layout::Vp,
     &SerialAssistantPage::prepareNothing, commandType::readVp},
    {"Curve of the cache area", "Feeds the ticked channels: two bytes a sample, high byte first.",
     Layout::Curve, &SerialAssistantPage::prepareCurve, commandType::curve},
    {"Since writing instruction",
     "Sends the data exactly as they stand: no header, length or CRC is added.", Layout::DataOnly,
     &SerialAssistantPage::prepareFreeForm, commandType::freeForm},
}};

SerialAssistantPage::SerialAssistantPage(const PageContext &context, QWidget *parent)
    : QWidget(parent), m_context(context), m_ui(std::make_unique<Ui::SerialAssistantPage>())
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

    connect(&context.trafficLog, &TrafficLog::linesReady, this,
            [this](const QStringList &lines) { m_ui->receiveText->append(lines.join('\n')); });
    m_ui->receiveText->setContextMenuPolicy(Qt::CustomContextMenu);
    connect(m_ui->receiveText, &QWidget::customContextMenuRequested, this,
            &SerialAssistantPage::showLogMenu);
    for (const ReplyReceiver *replies : {&context.uartReplies, &context.ed2Replies}) {
        connect(replies, &ReplyReceiver::registersRead, this, [this] { show(View::Registers); });
        connect(replies, &ReplyReceiver::vpRead, this, [this] { show(View::Vp); });
    }
    connect(&m_refresh, &PacedTrigger::fired, this, &SerialAssistantPage::refreshView);
}

SerialAssistantPage::~SerialAssistantPage() = default;

int SerialAssistantPage::registerPage() const
{
    return m_ui->regPage->value();
}

int SerialAssistantPage::address() const
{
    return m_ui->regVpAddr->value();
}

int SerialAssistantPage::length() const
{
    return m_ui->regVpLen->value();
}

QByteArray SerialAssistantPage::freeFormBytes() const
{
    return dataText::toBytes(m_ui->ChannelEdit0->text(), m_ui->hexMode->isChecked())
        .value_or(QByteArray());
}

void SerialAssistantPage::readVp(int address, int words)
{
    m_ui->regVpAddr->setValue(address);
    m_ui->regVpLen->setValue(words);
    m_context.session.start(commandType::readVp);
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
        if ((this->*kind.prepare)())
            m_context.session.start(kind.commandType);
        else
            m_context.notices.warn(texts::dataNotMeetRequirements);
    }
}

void SerialAssistantPage::on_clearReceiveLog_clicked()
{
    m_context.trafficLog.clear();
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
    if (!path.isEmpty() && !replaceFile(path, m_context.trafficLog.record().toUtf8()))
        m_context.notices.warn(texts::fileNotWritten);
}

bool SerialAssistantPage::prepareNothing()
{
    return true;
}

bool SerialAssistantPage::prepareRegisters()
{
    const auto bytes = dataText::toBytes(m_ui->ChannelEdit0->text(), m_ui->hexMode->isChecked());
    if (!bytes || bytes->size() > m_context.builder.maxDataBytes())
        return false;
    for (int i = 0; i < bytes->size(); ++i)
        m_context.builder.setRegister(registerPage(), address() + i, bigEndian::byteAt(*bytes, i));
    m_context.session.writeCount = static_cast<quint8>(bytes->size());
    return true;
}

bool SerialAssistantPage::prepareVp()
{
    const auto words = dataText::toWords(m_ui->ChannelEdit0->text(), m_ui->hexMode->isChecked());
    if (!words || words->size() > m_context.builder.maxDataBytes() / 2 ||
        address() + words->size() > FrameBuilder::vpWords)
        return false;
    for (int i = 0; i < words->size(); ++i)
        m_context.builder.setVp(static_cast<quint16>(address() + i), words->at(i));
    m_context.session.writeStart = static_cast<quint16>(address());
    m_context.session.writeCount = static_cast<quint8>(words->size());
    return true;
}

bool SerialAssistantPage::prepareCurve()
{
    std::array<QVector<quint16>, FrameBuilder::channels> samples;
    quint8 mask = 0;
    int channels = 0;
    int shortest = FrameBuilder::maxCurveSamples;
    for (int c = 0; c < FrameBuilder::channels; ++c) {
        const Channel &channel = m_channels.at(c);
        if (!channel.box->isChecked())
            continue;
        const auto words = dataText::toWords(channel.edit->text(), m_ui->hexMode->isChecked());
        if (!words)
            return false;
        samples[static_cast<size_t>(c)] = *words;
        mask = static_cast<quint8>(mask | 1 << c);
        shortest = qMin(shortest, words->size());
        ++channels;
    }
    // The frame goes on as long as every channel has a sample.
    if (2 * shortest * channels > m_context.builder.maxDataBytes())
        return false;
    for (int c = 0; c < FrameBuilder::channels; ++c)
        m_context.builder.setCurveSamples(c, samples[static_cast<size_t>(c)]);
    m_context.builder.setCurveChannelMask(mask);
    return true;
}

bool SerialAssistantPage::prepareFreeForm()
{
    return dataText::toBytes(m_ui->ChannelEdit0->text(), m_ui->hexMode->isChecked()).has_value();
}

void SerialAssistantPage::show(View view)
{
    m_view = view;
    m_refresh.request();
}

void SerialAssistantPage::refreshView()
{
    const QString text =
        m_view == View::Vp
            ? mirrorText::vpWords(m_context.builder, address(), length())
            : mirrorText::registers(m_context.builder, registerPage(), address(), length());
    if (m_ui->displayText->toPlainText() != text)
        m_ui->displayText->setPlainText(text);
}
