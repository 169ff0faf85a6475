#include "assistant/hex_spin_box.h"

HexSpinBox::HexSpinBox(QWidget *parent) : QSpinBox(parent)
{
    setDisplayIntegerBase(16);
}

QString HexSpinBox::textFromValue(int value) const
{
    return QString::number(value, 16).toUpper();
}

int HexSpinBox::valueFromText(const QString &text) const
{
    return text.trimmed().toInt(nullptr, 16);
}

QValidator::State HexSpinBox::validate(QString &text, int &) const
{
    const QString digits = text.trimmed();
    if (digits.isEmpty() || digits.compare("0x", Qt::CaseInsensitive) == 0)
        return QValidator::Intermediate;
    bool isNumber = false;
    const int value = digits.toInt(&isNumber, 16);
    if (!isNumber || value > maximum())
        return QValidator::Invalid;
    return value < minimum() ? QValidator::Intermediate : QValidator::Acceptable;
}
