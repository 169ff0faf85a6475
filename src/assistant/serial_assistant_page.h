#pragma once

#include "common/paced_trigger.h"
#include "common/page_context.h"
#include "engine/engine.h"

#include <QByteArray>
#include <QVector>
#include <QWidget>

#include <array>
#include <memory>
#include <optional>

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
    SerialAssistantPage(const PageContext &context, Engine &engine, QWidget *parent = nullptr);
    ~SerialAssistantPage() override;

    /// Asks for `words` VP words from `address` on, so that the user sees what is asked, and starts
    /// the exchange.
    void readVp(int address, int words);

private slots:
    void on_serialCmd_currentIndexChanged(int index);
    void on_sendCmd_clicked();
    void on_clearReceiveLog_clicked();

private:
    /// What the spin boxes say, each value as wide as its box.
    Engine::Range range() const;
    std::optional<QByteArray> data() const;

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
    // Each starts its exchange; false when the data are not fit for it.
    bool writeRegisters();
    bool readRegisters();
    bool writeVp();
    bool readVp();
    bool sendCurve();
    bool sendFreeForm();

    /// The standard menu of the log, with what else can be done with it.
    void showLogMenu(const QPoint &position);
    void saveLog();
    void show(View view);
    void refreshView();

    const PageContext m_context;
    Engine &m_engine;
    std::unique_ptr<Ui::SerialAssistantPage> m_ui;
    QVector<Channel> m_channels;
    View m_view = View::Registers;
    PacedTrigger m_refresh{0};
};
