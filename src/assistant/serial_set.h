#pragma once

#include "serial/serial_settings.h"

#include <QDialog>
#include <QStringList>

class QCheckBox;
class QComboBox;
class QSpinBox;

/// The settings dialog of one port. What the user edits counts once it is confirmed; the dialog
/// reports that with accepted(). Edits that were cancelled still show the next time.
class SerialSet : public QDialog
{
    Q_OBJECT

public:
    /// Lists no ports yet, and nothing is confirmed.
    explicit SerialSet(QWidget *parent = nullptr);

    /// Lists `systemPorts`, chooses the last of them, and confirms what is shown.
    void begin(const QStringList &systemPorts);

    const SerialSettings &settings() const { return m_settings; }

    /// Shows `rate` as the chosen rate, without confirming it.
    void setBaudText(int rate);
    /// Offers `names` after the ports that the system lists, from now on.
    void offerPorts(const QStringList &names);
    /// Chooses and confirms one of the offered ports; everything else stays as it was confirmed.
    void usePort(const QString &name);

private slots:
    // Named as the dialog has been known; connected by hand, because no widgets have these names.
    void query_clicked();
    void sreialName_activated();

private:
    void appendPorts(const QStringList &names);

    SerialSettings m_settings;
    QStringList m_extraPorts;
    QComboBox *m_port;
    QComboBox *m_baud;
    QSpinBox *m_header1;
    QSpinBox *m_header2;
    QCheckBox *m_crc;
};
