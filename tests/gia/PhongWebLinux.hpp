#pragma once
// The web host on the real engine of a Linux desktop, around fake capture and input.

#include <gtest/gtest.h>

#include <QWebEngineScript>
#include <functional>
#include <memory>
#include <optional>
#include <string>

#include "CuaSoLinux.hpp"
#include "VongLapLinux.hpp"
#include "gia/ChoQt.hpp"
#include "gia/MayChuTrang.hpp"
#include "gia/WebGia.hpp"

namespace tovira::gia {

// One profile for all tests of a process: engines do not like to share a store with a dying predecessor.
inline HoSoWeb& hoSoChung(HoSoWeb* moi = nullptr) {
    static HoSoWeb* hoSo = nullptr;
    if (moi != nullptr) hoSo = moi;
    return *hoSo;
}

// With this main queue and this probe.
template <class Vong, class Do>
struct PhongQt : NhaWeb<Vong, Do> {
    CuaSoTachLinux tach{hoSoChung()};
    TrangLinux trang{hoSoChung(), tach};
    CuaSoLinux cua{trang, this->caiDat};
    CuaSo cuaSo{this->choDua(cua, trang, tach)};

    explicit PhongQt(const std::string& mayChu) : NhaWeb<Vong, Do>(mayChu) {}

    [[nodiscard]] QWebEnginePage& page() { return *trang.khungNhin().page(); }

    // The value of an expression in the page, as text.
    std::string js(const std::string& bieuThuc, quint32 theGioi = QWebEngineScript::MainWorld,
                   QWebEnginePage* trangNao = nullptr) {
        // Shared: an answer may still come when nobody waits any more.
        const auto ra = std::make_shared<std::optional<std::string>>();
        auto* p = trangNao == nullptr ? &page() : trangNao;
        p->runJavaScript(QString::fromStdString(bieuThuc), theGioi,
                         [ra](const QVariant& v) { *ra = v.toString().toStdString(); });
        EXPECT_TRUE(cho([&] { return ra->has_value(); })) << bieuThuc;
        return ra->value_or("(no answer)");
    }
    // Waits until the expression is true in the page.
    bool choJs(const std::string& bieuThuc) {
        return cho([&] { return js("!!(" + bieuThuc + ")") == "true"; });
    }
    // Waits until a page with this title has loaded.
    bool choTrang(const std::string& ten) {
        return choJs("document.readyState === 'complete' && document.title === '" + ten + "'");
    }

    // Nothing more is under way from the page to the host.
    void lang() {
        js("1");
        js("1", QWebEngineScript::ApplicationWorld);
    }

    // The screen is being shared, as far as the window can tell.
    void phat() {
        this->xinPhat();
        auto& luong = this->nenMan.luong;
        ASSERT_TRUE(cho([&] { return !luong.empty() && luong.back()->xong; }));
        luong.back()->xong({});
        ASSERT_TRUE(cho([&] { return this->manHinh.dangPhat(); }));
    }
};

// Probes are answered by the test.
struct PhongWebLinux : PhongQt<VongLapLinux, DoMayChuGia> {
    // A name that the engine's resolver maps onto the test's server (see chayThuWeb).
    static constexpr const char* gocTin = "http://tin.example";

    PhongWebLinux() : PhongQt(gocTin) {}

    // Builds everything and shows the server's application.
    void len() {
        cuaSo.dung();
        doMayChu.traLoi(true);
        cuaSo.hien();
        ASSERT_TRUE(choTrang("app"));
    }
};

}  // namespace tovira::gia
