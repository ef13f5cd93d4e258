#include "platform/qt/TcpFrameTransport.h"

namespace tlx {

void TcpFrameTransport::open() {
    close();
    auto* s = new QTcpSocket;
    socket_ = s;
    s->setSocketOption(QAbstractSocket::LowDelayOption, 1);
    QObject::connect(s, &QTcpSocket::connected, s, [this] {
        if (onOpen) onOpen();
    });
    QObject::connect(s, &QTcpSocket::readyRead, s, [this, s] {
        const QByteArray bytes = s->readAll();
        if (onData) onData(std::string_view(bytes.constData(), static_cast<std::size_t>(bytes.size())));
    });
    // Either signal ends the connection; the first one reports it.
    auto ended = [this, s] {
        if (socket_ != s) return;
        const std::string why = s->errorString().toStdString();
        close();
        if (onClosed) onClosed(why);
    };
    QObject::connect(s, &QTcpSocket::disconnected, s, ended);
    QObject::connect(s, &QTcpSocket::errorOccurred, s, ended);
    s->connectToHost(host_, port_);
}

void TcpFrameTransport::close() {
    if (!socket_) return;
    QTcpSocket* s = socket_;
    socket_ = nullptr;
    QObject::disconnect(s, nullptr, nullptr, nullptr);
    s->abort();
    s->deleteLater();
}

void TcpFrameTransport::send(const std::string& bytes) {
    if (socket_) socket_->write(bytes.data(), static_cast<qint64>(bytes.size()));
}

std::size_t TcpFrameTransport::unsent() const {
    return socket_ ? static_cast<std::size_t>(socket_->bytesToWrite()) : 0;
}

std::string TcpFrameTransport::peer() const {
    const std::string h = host_.toStdString();
    return (h.find(':') != std::string::npos ? "[" + h + "]" : h) + ":" + std::to_string(port_);
}

bool parseEndpoint(const std::string& text, QString& host, quint16& port) {
    std::string h = "127.0.0.1", p = text;
    if (!text.empty() && text.front() == '[') {
        const auto close = text.find("]:");
        if (close == std::string::npos) return false;
        h = text.substr(1, close - 1);
        p = text.substr(close + 2);
    } else if (const auto colon = text.rfind(':'); colon != std::string::npos) {
        h = text.substr(0, colon);
        p = text.substr(colon + 1);
        if (h.find(':') != std::string::npos) return false;  // IPv6 addresses need brackets
    }
    if (h.empty() || p.empty() || p.size() > 5) return false;
    unsigned long n = 0;
    for (char c : p) {
        if (c < '0' || c > '9') return false;
        n = n * 10 + static_cast<unsigned long>(c - '0');
    }
    if (n > 65535) return false;
    host = QString::fromStdString(h);
    port = static_cast<quint16>(n);
    return true;
}

}  // namespace tlx
