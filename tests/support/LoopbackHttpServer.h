#pragma once

#include <QByteArray>
#include <QHash>
#include <QList>
#include <QTcpServer>
#include <QTcpSocket>
#include <functional>

namespace pelorin::test {

// A tiny HTTP/1.1 server on 127.0.0.1 for tests that fetch over the network (map tiles, the
// update document). Answers GET requests from a table of paths (or a handler), closes every
// connection after the answer, and records what was asked.
class LoopbackHttpServer : public QObject {
public:
    struct Response {
        int status = 200;
        QByteArray contentType = "application/octet-stream";
        QByteArray body;
    };
    struct Request {
        QByteArray path;
        QHash<QByteArray, QByteArray> headers;  // names in lower case
    };

    LoopbackHttpServer() { server_.listen(QHostAddress::LocalHost, 0); connect(&server_, &QTcpServer::newConnection, this, [this] { accept(); }); }

    bool isListening() const { return server_.isListening(); }
    QString baseUrl() const { return QStringLiteral("http://127.0.0.1:%1").arg(server_.serverPort()); }

    void setResponse(const QByteArray& path, const Response& response) { routes_.insert(path, response); }
    // Called for paths without a fixed response; answer nullopt-like status 0 for 404.
    std::function<Response(const QByteArray& path)> handler;

    const QList<Request>& requests() const { return requests_; }
    void clearRequests() { requests_.clear(); }

private:
    void accept()
    {
        while (QTcpSocket* socket = server_.nextPendingConnection()) {
            connect(socket, &QTcpSocket::readyRead, this, [this, socket] { serve(socket); });
            connect(socket, &QTcpSocket::disconnected, socket, &QObject::deleteLater);
        }
    }

    void serve(QTcpSocket* socket)
    {
        QByteArray& buffer = pending_[socket];
        buffer += socket->readAll();
        const qsizetype end = buffer.indexOf("\r\n\r\n");
        if (end < 0)
            return;
        const QList<QByteArray> lines = buffer.left(end).split('\n');
        pending_.remove(socket);
        Request request;
        const QList<QByteArray> first = lines.value(0).trimmed().split(' ');
        request.path = first.value(1);
        for (qsizetype i = 1; i < lines.size(); ++i) {
            const qsizetype colon = lines[i].indexOf(':');
            if (colon > 0)
                request.headers.insert(lines[i].left(colon).trimmed().toLower(), lines[i].mid(colon + 1).trimmed());
        }
        requests_.append(request);
        Response response;
        if (routes_.contains(request.path))
            response = routes_.value(request.path);
        else if (handler)
            response = handler(request.path);
        else
            response.status = 404;
        if (response.status == 0)
            response.status = 404;
        QByteArray reply = "HTTP/1.1 " + QByteArray::number(response.status) + (response.status == 200 ? " OK" : " Error") +
                           "\r\nContent-Type: " + response.contentType + "\r\nContent-Length: " +
                           QByteArray::number(response.body.size()) + "\r\nConnection: close\r\n\r\n" + response.body;
        socket->write(reply);
        socket->disconnectFromHost();
    }

    QTcpServer server_;
    QHash<QByteArray, Response> routes_;
    QHash<QTcpSocket*, QByteArray> pending_;
    QList<Request> requests_;
};

}  // namespace pelorin::test
