#pragma once
// A small web server for real engines, turned by Qt's event loop: answers each path as the test says.

#include <sys/socket.h>

#include <QHash>
#include <QHostAddress>
#include <QPointer>
#include <QTcpServer>
#include <QTcpSocket>
#include <map>
#include <string>
#include <utility>
#include <vector>

namespace tovira::gia {

class MayChuTrang {
  public:
    struct TraLoi {
        std::string than;
        std::string kieu = "text/html; charset=utf-8";
        std::string dauThem = {};  // whole header lines
        int trangThai = 200;
        bool treo = false;      // never answered
        std::size_t thieu = 0;  // bytes promised beyond the body
        bool giuLai = false;    // the second half of the body waits for tha()
    };

    // Answers nobody yet.
    MayChuTrang() {
        QObject::connect(&nghe_, &QTcpServer::newConnection, &nghe_, [this] {
            while (auto* khach = nghe_.nextPendingConnection())
                nhan(*khach);
        });
    }

    // Takes over a socket that is bound and listening already.
    void mo(int oCam) { nghe_.setSocketDescriptor(oCam); }
    // Gone, with every connection.
    void tat() {
        nghe_.close();
        for (auto* khach : nghe_.findChildren<QTcpSocket*>())
            khach->abort();
    }
    // Sends what it kept back (TraLoi::giuLai).
    void tha() {
        for (auto& [khach, con] : std::exchange(giuLai_, {})) {
            if (khach == nullptr) continue;
            khach->write(con);
            khach->disconnectFromHost();
        }
    }

    [[nodiscard]] std::uint16_t cong() const { return nghe_.serverPort(); }

    std::map<std::string, TraLoi> trang;  // by path, without query
    std::vector<std::string> daHoi;       // "host path" of every request
    bool cat = false;                     // resets every connection that asks for something

  private:
    void nhan(QTcpSocket& khach) {
        QObject::connect(&khach, &QTcpSocket::disconnected, &khach, [this, &khach] {
            dau_.remove(&khach);
            khach.deleteLater();
        });
        QObject::connect(&khach, &QTcpSocket::readyRead, &khach, [this, &khach] {
            auto& dau = dau_[&khach];
            dau += khach.readAll();
            if (cat) {
                const linger ngay{1, 0};
                ::setsockopt(static_cast<int>(khach.socketDescriptor()), SOL_SOCKET, SO_LINGER, &ngay,
                             sizeof ngay);
                return khach.abort();
            }
            if (!dau.contains("\r\n\r\n")) return;
            traLoi(khach, dau_.take(&khach));
        });
    }

    void traLoi(QTcpSocket& khach, const QByteArray& dau) {
        const auto duong = dau.split(' ').value(1).split('?').value(0).toStdString();
        const auto cho = dau.indexOf("\r\nHost: ");
        const auto may = cho < 0 ? QByteArray() : dau.mid(cho + 8, dau.indexOf("\r\n", cho + 8) - cho - 8);
        daHoi.push_back(may.toStdString() + " " + duong);
        const auto muc = trang.find(duong);
        static const TraLoi khongCo{"", "text/plain", "", 404, false};
        const auto& tra = muc == trang.end() ? khongCo : muc->second;
        if (tra.treo) return;
        khach.write(QByteArray::fromStdString(
            "HTTP/1.1 " + std::to_string(tra.trangThai) + " X\r\nContent-Type: " + tra.kieu +
            "\r\nContent-Length: " + std::to_string(tra.than.size() + tra.thieu) +
            "\r\nConnection: close\r\n" + tra.dauThem + "\r\n"));
        const auto than = QByteArray::fromStdString(tra.than);
        if (tra.giuLai) {
            khach.write(than.first(than.size() / 2));
            giuLai_.emplace_back(&khach, than.sliced(than.size() / 2));
            return;
        }
        khach.write(than);
        khach.disconnectFromHost();
    }

    QTcpServer nghe_;
    QHash<QTcpSocket*, QByteArray> dau_;
    std::vector<std::pair<QPointer<QTcpSocket>, QByteArray>> giuLai_;
};

}  // namespace tovira::gia
