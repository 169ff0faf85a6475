#pragma once

#include "common/paced_trigger.h"
#include "serial/page_context.h"

#include <QByteArray>
#include <QVector>
#include <QWidget>

#include <array>
#include <memory>

class QCheckBox;
class QLabel;
class QLineEdit;

namespace Ui {
class SerialAssistantPage;
}

/// The serial assistant: single commands composed by hand, the traffic of the UART2 link, and the
/// registers or VP words that the module last reported.
class SerialAssistantPage : public QWidget
{
    Q_OBJECT

public:
    explicit SerialAssistantPage(const PageContext &context, QWidget *parent = nullptr);
    ~SerialAssistantPage() override;

    /// What the reading exchanges send, each value as wide as its spin box.
    int registerPage() const;
    int address() const;
    int length() const;
    /// The bytes of the free-form instruction; none when the text is not valid.
    QByteArray freeFormBytes() const;

    /// Asks for `words` VP words from `address` on, so that the user sees what is asked, and starts
    /// the exchange.
    void readVp(int address, int words);

private slots:
    void on_serialCmd_currentIndexChanged(int index);
    void on_sendCmd_clicked();
    void on_clearReceiveLog_clicked();

private:
    enum class Layout { Register, Vp, Curve, DataOnly };
    enum class View { Registers, Vp };
    struct Kind;
    static const std::array<Kind, 6> kinds;

    struct Channel
    {
        QCheckBox *box;
        QLineEdit *edit;
        QLabel *label;
    };

    void apply(Layout layout);
    // Each prepares what its exchange sends; false when the data are not fit for it.
    bool prepareNothing();
    bool prepareRegisters();
    bool prepareVp();
    bool prepareCurve();
    bool prepareFreeForm();

    /// The standard menu of the log, with what else can be done with it.
    void showLogMenu(const QPoint &position);
    void saveLog();
    void show(View view);
    void refreshView();

    const PageContext m_context;
    std::unique_ptr<Ui::SerialAssistantPage> m_ui;
    QVector<Channel> m_channels;
    View m_view = View::Registers;
    PacedTrigger m_refresh{0};
};
