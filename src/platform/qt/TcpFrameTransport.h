#pragma once
// The network adapter's connection to the network base emulator: a QTcpSocket on the loop's
// thread, never waited on (connecting, writing and reading all report through signals).
#include <QObject>
#include <QPointer>
#include <QString>
#include <QTcpSocket>

#include "platform/net/NetBaseLibrary.h"

namespace tlx {

class TcpFrameTransport : public FrameTransport {
public:
    TcpFrameTransport(QString host, quint16 port) : host_(std::move(host)), port_(port) {}
    ~TcpFrameTransport() override { close(); }
    void open() override;
    void close() override;
    void send(const std::string& bytes) override;
    std::size_t unsent() const override;
    std::string peer() const override;

private:
    QString host_;
    quint16 port_;
    QPointer<QTcpSocket> socket_;
};

// "HOST:PORT", "[::1]:PORT" or "PORT" (on 127.0.0.1): false when it does not read.
bool parseEndpoint(const std::string& text, QString& host, quint16& port);

}  // namespace tlx
