// Feeds arbitrary bytes to the service's side of the socket: the line framing, then the envelope check
// of every message it lets through. The same bytes arriving in pieces must be read exactly as when
// they arrive at once, and every refusal must say why.

#include "platform/communication/json_line_buffer.h"
#include "service/server/request_envelope.h"

#include <QByteArray>
#include <QJsonObject>
#include <QList>

#include <cstdint>
#include <cstdlib>

using TWB::Common::Communication::JsonLineBuffer;
using TWB::Service::RequestEnvelope;

namespace {

struct Reading
{
    QList<QJsonObject> messages;
    bool failed = false;
};

// A small limit, so that the fuzzer reaches the paths of lines that are too long.
constexpr qint64 lineLimit = 512;

bool drain(JsonLineBuffer& lines, Reading& reading)
{
    for (;;) {
        QJsonObject message;
        QString error;
        switch (lines.next(&message, &error)) {
        case JsonLineBuffer::Result::Message:
            reading.messages.append(message);
            break;
        case JsonLineBuffer::Result::NeedMore:
            if (lines.size() > lineLimit)
                std::abort();
            return true;
        case JsonLineBuffer::Result::Error:
            if (error.isEmpty() || lines.size() != 0)
                std::abort();
            reading.failed = true;
            return false;
        }
    }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    if (size == 0)
        return 0;
    // The first byte chooses how the rest arrives: in pieces of 1 to 256 bytes.
    const int piece = int(data[0]) + 1;
    const QByteArray bytes(reinterpret_cast<const char*>(data + 1), int(size - 1));

    Reading whole;
    JsonLineBuffer once;
    once.setMaxLineSize(lineLimit);
    once.append(bytes);
    drain(once, whole);

    Reading pieces;
    JsonLineBuffer bit;
    bit.setMaxLineSize(lineLimit);
    for (int at = 0; at < bytes.size(); at += piece) {
        bit.append(bytes.mid(at, piece));
        if (!drain(bit, pieces))
            break;
    }
    if (pieces.failed != whole.failed || pieces.messages != whole.messages)
        std::abort();

    for (const QJsonObject& message : qAsConst(whole.messages)) {
        RequestEnvelope request;
        QString refusal;
        if (RequestEnvelope::read(message, &request, &refusal)) {
            if (request.id.isEmpty() || request.command.isEmpty() || !refusal.isEmpty())
                std::abort();
        } else if (refusal.isEmpty()) {
            std::abort();
        }
    }
    return 0;
}
