#include "crc/crc_comparison.h"
#include "download/downloads.h"
#include "download/flash_blocks.h"
#include "download/screen_picture.h"
#include "engine/engine.h"
#include "simulator/direct_link.h"
#include "simulator/simulator.h"
#include "support/event_loop.h"
#include "support/random_bytes.h"
#include "support/recording_notices.h"

#include <optional>

/// The engine and the module in one process, without a window, a device, or Qt Widgets.
class TestHeadless : public QObject
{
    Q_OBJECT

private slots:
    void downloadsAndTheCheckRunWithoutAWindow()
    {
        k7::Simulator simulator;
        QVERIFY(simulator.start(k7::Way::InProcess));
        k7::DirectLink uart(simulator);
        k7::DirectLink ed2(simulator);
        RecordingNotices notices;
        Engine engine(uart, ed2, notices);
        engine.useUart({simulator.uartPath(), 115200, 0x5A, 0xA5, false});
        engine.useEd2({simulator.ed2Path(), 6250000});
        Downloads downloads(engine);
        auto &comparison = engine.add(std::make_unique<CrcComparison>(engine.uart()));
        std::optional<Outcome> outcome;
        connect(&engine, &Engine::ended, this, [&](int, Outcome ended) { outcome = ended; });
        const auto finished = [&outcome] {
            runEventLoopUntil([&] { return outcome.has_value(); }, 20000);
            return std::exchange(outcome, std::nullopt);
        };
        engine.start();

        const QByteArray font = randomBytes(5000);
        downloads.fonts.start(flashBlocks(8, font), BlockDownload::fontEndTick);
        QVERIFY(finished() == Outcome::Done);
        QCOMPARE(simulator.module().flash().read(8 * k7::Flash::blockBytes, font.size()), font);

        QImage image(32, 16, QImage::Format_RGB32);
        image.fill(Qt::red);
        const QByteArray pixels = screenPicture::pixels(image, {64, 32});
        downloads.pictures.start({{5, pixels}}, screenPicture::endTick({64, 32}));
        QVERIFY(finished() == Outcome::Done);
        QCOMPARE(simulator.module().pictures().value(5), pixels);

        downloads.jpg.start(font, [] { return JpgDownload::Display{1, 7, 0}; });
        QVERIFY(finished() == Outcome::Done);
        QCOMPARE(simulator.module().jpeg().content, font);

        comparison.setItems(crcCheck::unitsOf("8_a.bin", font).items +
                            crcCheck::unitsOf("9_a.bin", font).items);
        comparison.start();
        QVERIFY(finished() == Outcome::Done);
        QCOMPARE(comparison.items().at(0).compareResult, QString("true"));
        QCOMPARE(comparison.items().at(1).compareResult, QString("false"));
        QCOMPARE(notices.shown.last(), QString("Check finish !"));

        simulator.hangUp();
        QVERIFY(engine.writeVp(0x84, {1}));
        QVERIFY(finished() == Outcome::NotOpened);
    }
};

QTEST_GUILESS_MAIN(TestHeadless)
#include "tst_headless.moc"
