#include "assistant/serial_set.h"

#include "assistant/hex_spin_box.h"
#include "serial/system_ports.h"

#include <QCheckBox>
#include <QComboBox>
#include <QDialogButtonBox>
#include <QFormLayout>
#include <QPushButton>

namespace {

const QString refresh = QStringLiteral("Refresh");

QSpinBox *headerBox(int value)
{
    auto *box = new HexSpinBox;
    box->setRange(0, 0xFF);
    box->setValue(value);
    return box;
}

} // namespace

SerialSet::SerialSet(QWidget *parent)
    : QDialog(parent)
    , m_port(new QComboBox)
    , m_baud(new QComboBox)
    , m_header1(headerBox(0x5A))
    , m_header2(headerBox(0xA5))
    , m_crc(new QCheckBox)
{
    m_baud->addItems({"1200", "2400", "4800", "9600", "19200", "38400", "56000", "57600", "115200",
                      "128000", "230400", "460800", "921600", "6250000"});
    m_baud->setCurrentText("115200");

    auto *confirm = new QPushButton("确定");
    auto *cancel = new QPushButton("取消");
    auto *buttons = new QDialogButtonBox;
    buttons->addButton(confirm, QDialogButtonBox::AcceptRole);
    buttons->addButton(cancel, QDialogButtonBox::RejectRole);

    auto *form = new QFormLayout(this);
    form->addRow("端口号：", m_port);
    form->addRow("波特率：", m_baud);
    form->addRow("R3(0X)：", m_header1);
    form->addRow("RA(0X)：", m_header2);
    form->addRow("CRC Verity：", m_crc);
    form->addRow(buttons);
    m_port->setMinimumWidth(180);

    connect(confirm, &QPushButton::clicked, this, &SerialSet::query_clicked);
    connect(cancel, &QPushButton::clicked, this, &SerialSet::close);
    connect(m_port, QOverload<int>::of(&QComboBox::activated), this,
            &SerialSet::sreialName_activated);

    m_port->addItem(refresh);
}

void SerialSet::begin(const QStringList &systemPorts)
{
    appendPorts(systemPorts);
    query_clicked();
}

void SerialSet::setBaudText(int rate)
{
    m_baud->setCurrentText(QString::number(rate));
}

void SerialSet::offerPorts(const QStringList &names)
{
    m_extraPorts += names;
    appendPorts(names);
}

void SerialSet::usePort(const QString &name)
{
    m_port->setCurrentText(name);
    m_settings.portName = m_port->currentText();
    accept();
}

void SerialSet::query_clicked()
{
    m_settings.portName = m_port->currentText();
    m_settings.baudRate = m_baud->currentText().toInt();
    m_settings.header1 = static_cast<quint8>(m_header1->value());
    m_settings.header2 = static_cast<quint8>(m_header2->value());
    m_settings.crcEnabled = m_crc->checkState() != Qt::Unchecked;
    accept();
}

void SerialSet::sreialName_activated()
{
    if (m_port->currentText() != refresh)
        return;
    m_port->clear();
    m_port->addItem(refresh);
    m_port->setCurrentText(refresh);
    appendPorts(systemPorts() + m_extraPorts);
}

void SerialSet::appendPorts(const QStringList &names)
{
    m_port->addItems(names);
    // The last port ends up selected: it is usually the adapter that was plugged in last.
    m_port->setCurrentIndex(m_port->count() - 1);
}
