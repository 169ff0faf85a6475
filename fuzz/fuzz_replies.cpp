#include "serial/frame_builder.h"
#include "serial/reply_receiver.h"

#include <QtGlobal>

/// Whatever bytes a module sends, in whatever pieces: the receivers of both links go on, and still
/// find a reply afterwards. The first byte of each piece is its length.
extern "C" int LLVMFuzzerTestOneInput(const quint8 *data, size_t size)
{
    FrameBuilder mirrors;
    bool isAcknowledged = false;
    ReplyReceiver uart(uartReceiveRules, mirrors, isAcknowledged);
    ReplyReceiver ed2(ed2ReceiveRules, mirrors, isAcknowledged);
    for (ReplyReceiver *receiver : {&uart, &ed2})
        receiver->setHeader(0x5A, 0xA5);
    const QByteArray input(reinterpret_cast<const char *>(data), static_cast<int>(size));
    for (int at = 0; at < input.size();) {
        const QByteArray piece = input.mid(at + 1, static_cast<quint8>(input.at(at)));
        uart.receive(piece);
        ed2.receive(piece);
        at += 1 + piece.size();
    }
    // What an unfinished frame still asks for is at most 255 bytes.
    isAcknowledged = false;
    uart.receive(QByteArray(300, '\0'));
    uart.receive(QByteArray::fromHex("5AA503824F4B"));
    if (!isAcknowledged)
        qFatal("an acknowledgement was not found");
    return 0;
}
