#include "ManHinh.hpp"

#include <gtest/gtest.h>
#include <sys/resource.h>

#include <atomic>
#include <limits>
#include <mutex>
#include <system_error>
#include <thread>

#include "DieuKhien.hpp"
#include "gia/KhachThu.hpp"
#include "gia/NenDieuKhienGia.hpp"
#include "gia/NenManHinhGia.hpp"

using namespace tovira;
using gia::choDen;
using gia::KhachThu;
using gia::KhungGia;
using Ds = std::vector<std::string>;

namespace {

constexpr auto nhoNhat = std::numeric_limits<std::int64_t>::min();
constexpr auto lonNhat = std::numeric_limits<std::int64_t>::max();

ManHinh::Nguon manHinh(std::uint32_t ma, const char* ten, double x, bool chinh = false) {
    return {.ma = ma,
            .ten = ten,
            .rong = 1920,
            .cao = 1080,
            .diemAnh = {3840, 2160},
            .khung = {x, 0, 1920, 1080},
            .chinh = chinh};
}

const Loi loiDoi{ManHinh::mienNguon, ManHinh::maManHinhDoi, "màn hình đã đổi"};
const Loi loiHeThong{"hệ thống", -3801, "bị thu hồi"};

// A viewer of the address that the page was told.
struct KhachXem : KhachThu {
    explicit KhachXem(const std::string& url) : KhachThu(congTu(url)) {
        gui("GET " + url.substr(url.find("/man-hinh")) + " HTTP/1.1\r\n\r\n");
    }
    // Takes the first whole picture off what has been read; "" while there is none.
    std::string catAnh() {
        const auto dau = daDoc.find("\r\n\r\n");
        if (dau == std::string::npos) return {};
        const auto het = daDoc.find("\r\n", dau + 4);
        if (het == std::string::npos) return {};
        std::string anh = daDoc.substr(dau + 4, het - dau - 4);
        daDoc.erase(0, het + 2);
        return anh;
    }
    static std::uint16_t congTu(const std::string& url) {
        return static_cast<std::uint16_t>(std::stoi(url.substr(std::string("http://127.0.0.1:").size())));
    }
};

struct ManHinhThu : testing::Test {
    gia::VongLapGia vong;
    gia::NenManHinhGia nen;
    gia::NenDieuKhienGia nenDieuKhien;
    DieuKhien dieuKhien{nenDieuKhien, vong};
    std::unique_ptr<ManHinh> mh = std::make_unique<ManHinh>(nen, vong, dieuKhien);
    // What happened, in order: "url", "lỗi …", "dừng", "tự dừng".
    Ds nhatKy;
    std::string url;

    void SetUp() override {
        nen.ketQuaLietKe = std::vector{manHinh(7, "Trái", 0, true), manHinh(9, "", 1920)};
        mh->khiDoi = [this](const std::string& u, const std::string& loi) {
            EXPECT_TRUE(u.empty() || loi.empty());
            if (!u.empty()) url = u;
            nhatKy.push_back(!u.empty() ? "url" : loi.empty() ? "dừng" : "lỗi " + loi);
        };
        mh->khiTuDung = [this] { nhatKy.push_back("tự dừng"); };
    }
    Ds lay() { return std::exchange(nhatKy, {}); }

    gia::NenManHinhGia::LuongThay& luong() { return *nen.luong.back(); }
    void xin(std::int64_t chiSo = 0) {
        mh->batDau(chiSo);
        vong.xa();
    }
    void traLoi(const KetQua<void>& ketQua = {}) {
        luong().xong(ketQua);
        vong.xa();
    }
    void chiaSe() {
        xin();
        traLoi();
        ASSERT_TRUE(mh->dangPhat());
        ASSERT_EQ(lay(), Ds{"url"});
    }
    void biDung(const Loi& loi) {
        luong().phiaNhan.khiBiDung(loi);
        vong.xa();
    }
    void coKhung(const std::string& anh) {
        nen.hangDoi.xa();
        luong().phiaNhan.khiCoKhung(std::make_unique<KhungGia>(anh));
    }
    // A viewer that has got as far as the server's table. The frame queue has been told of it.
    std::unique_ptr<KhachXem> vaoXem() {
        nen.hangDoi.xa();
        auto khach = std::make_unique<KhachXem>(url);
        khach->layToi("\r\n\r\n");
        EXPECT_TRUE(choDen([&] { return nen.hangDoi.xa() > 0; }));
        return khach;
    }
    // The next picture that this viewer gets, the frame queue turning meanwhile; "" when none comes.
    std::string anhKe(KhachXem& khach) {
        std::string anh;
        EXPECT_TRUE(choDen([&] {
            nen.hangDoi.xa();
            khach.docThem(1);
            return !(anh = khach.catAnh()).empty();
        }));
        return anh;
    }
    // Does anything listen at the address that the page was told?
    [[nodiscard]] bool conNghe() const { return KhachThu(KhachXem::congTu(url)).noiDuoc(); }
};

// No new socket can be made in this scope.
class HetSocket {
  public:
    HetSocket() {
        // A sanitizer opens a pipe to look at a type that is new to it: show it this one while it can.
        const auto mau = std::make_unique<std::system_error>(std::error_code());
        EXPECT_NE(std::make_unique<std::system_error>(*mau)->what(), nullptr);
        ::getrlimit(RLIMIT_NOFILE, &truoc_);
        rlimit it = truoc_;
        it.rlim_cur = 0;
        ::setrlimit(RLIMIT_NOFILE, &it);
    }
    ~HetSocket() { ::setrlimit(RLIMIT_NOFILE, &truoc_); }
    HetSocket(const HetSocket&) = delete;
    HetSocket& operator=(const HetSocket&) = delete;

  private:
    rlimit truoc_{};
};

}  // namespace

TEST(LuatManHinh, coThuNho) {
    struct {
        KichThuoc co;
        std::int64_t toiDa;
        KichThuoc mong;
    } const bang[] = {
        {{1920, 1080}, 2160, {1920, 1080}},       {{1921, 1081}, 2160, {1921, 1081}},
        {{3841, 2160}, 2160, {3841, 2160}},       {{5120, 2880}, 2160, {3840, 2160}},
        {{3024, 1964}, 1080, {1662, 1080}},       {{1000, 2161}, 2160, {998, 2160}},
        {{1920, 1080}, 481, {854, 480}},          {{1, 100000}, 480, {0, 478}},
        {{lonNhat, lonNhat}, 2880, {2880, 2880}}, {{0, -5}, 480, {0, -5}},
    };
    for (const auto& dong : bang)
        EXPECT_EQ(ManHinh::coThuNho(dong.co, dong.toiDa), dong.mong) << dong.co.rong << "x" << dong.co.cao;
}

TEST(LuatManHinh, canhMoi) {
    struct {
        std::int64_t cao, toiDa;
        std::optional<std::int64_t> mong;
    } const bang[] = {
        {100, 2160, 480},         {2000, 2160, std::nullopt},
        {1800, 2160, 1800},       {1815, 2160, std::nullopt},
        {5000, 2160, 2880},       {5000, 2880, std::nullopt},
        {0, 500, std::nullopt},   {nhoNhat, 2160, 480},
        {lonNhat, 2160, 2880},    {600, 480, 600},
        {556, 480, std::nullopt}, {557, 480, 557},
    };
    for (const auto& dong : bang)
        EXPECT_EQ(ManHinh::canhMoi(dong.cao, dong.toiDa), dong.mong) << dong.cao << " từ " << dong.toiDa;
}

TEST(LuatManHinh, canhNguoiXem) {
    CanhNguoiXem canh;
    const auto nhip = [&](std::optional<std::size_t> so, double luc) {
        return canh.nhip(so, luc) == CanhNguoiXem::Viec::ketThuc;
    };
    EXPECT_FALSE(nhip(std::nullopt, 1e6)) << "the first viewer is waited for";
    EXPECT_EQ(canh.nhip(0, 1e6), CanhNguoiXem::Viec::vuaVang);
    EXPECT_EQ(canh.nhip(0, 1e6 + 2), CanhNguoiXem::Viec::tiep) << "only once";
    EXPECT_FALSE(nhip(0, 1e6 + 7.9));
    EXPECT_FALSE(nhip(2, 1e6 + 8)) << "somebody is back";
    EXPECT_EQ(canh.nhip(0, 1e6 + 10), CanhNguoiXem::Viec::vuaVang);
    EXPECT_FALSE(nhip(0, 1e6 + 17.9));
    EXPECT_TRUE(nhip(0, 1e6 + 18));
}

TEST_F(ManHinhThu, danhSach) {
    std::optional<std::vector<MucManHinh>> nhan;
    const auto hoi = [&] { mh->hoiDanhSach([&](const auto& ds) { nhan = ds; }); };
    const std::vector<MucManHinh> mong{{0, "Trái", 1920, 1080, true}, {1, "Màn hình 2", 1920, 1080, false}};
    hoi();
    EXPECT_FALSE(nhan) << "arrives on the main queue";
    vong.xa();
    EXPECT_EQ(nhan, mong);
    EXPECT_EQ(mh->danhSach(), mong);

    nen.ketQuaLietKe = loiHeThong;
    hoi();
    vong.xa();
    EXPECT_EQ(nhan, std::vector<MucManHinh>{});

    nhan.reset();
    nen.duoc = false;
    hoi();
    EXPECT_EQ(nhan, std::vector<MucManHinh>{}) << "at once";
    EXPECT_EQ(nen.soLanXin, 0);
    EXPECT_EQ(mh->danhSach(), mong);
}

TEST_F(ManHinhThu, batDauRoiDungTheoThuTu) {
    xin(1);
    EXPECT_EQ(luong().nguon.ma, 9U);
    EXPECT_EQ(luong().cauHinh[0], (ManHinh::CauHinh{{3840, 2160}, 12, 3, true}));
    EXPECT_EQ(dieuKhien.khungManHinh(), (KhungHinh{1920, 0, 1920, 1080}));
    EXPECT_FALSE(mh->dangPhat());
    EXPECT_EQ(lay(), Ds{});
    luong().xong({});
    EXPECT_FALSE(mh->dangPhat()) << "before the main queue has run";
    vong.xa();
    EXPECT_TRUE(mh->dangPhat());
    EXPECT_EQ(lay(), Ds{"url"});
    EXPECT_TRUE(url.starts_with("http://127.0.0.1:"));
    EXPECT_EQ(url.substr(url.find('=') + 1).size(), 36U);
    EXPECT_TRUE(conNghe());

    mh->dung();
    EXPECT_FALSE(mh->dangPhat());
    EXPECT_FALSE(luong().con);
    EXPECT_FALSE(conNghe());
    EXPECT_EQ(nen.thuc, (std::vector{true, false}));
    EXPECT_EQ(vong.soHenDangCho(), 0U);
    EXPECT_EQ(dieuKhien.khungManHinh().x, 1920) << "stays";
    mh->dung();
    EXPECT_EQ(lay(), (Ds{"dừng", "dừng"})) << "also when nothing was running";
}

TEST_F(ManHinhThu, viTriNgoaiDanhSachLayDauGanNhat) {
    for (const auto& [chiSo, ma] :
         {std::pair{std::int64_t{-3}, 7U}, {99, 9U}, {nhoNhat, 7U}, {lonNhat, 9U}}) {
        xin(chiSo);
        EXPECT_EQ(luong().nguon.ma, ma) << chiSo;
    }
}

TEST_F(ManHinhThu, khongCoQuyen) {
    nen.duoc = false;
    xin();
    EXPECT_EQ(lay(), Ds{"lỗi Chưa được cấp quyền Ghi màn hình"});
    EXPECT_EQ(nen.soLanMoCaiDat, 1);
    nen.xinDuoc = true;
    xin();
    EXPECT_EQ(lay(), Ds{"lỗi Hãy mở lại Tovira để quyền Ghi màn hình có hiệu lực"});
    EXPECT_EQ(nen.soLanMoCaiDat, 1);
    EXPECT_TRUE(nen.luong.empty());

    // A stop that comes while the user is being asked is the last word.
    nen.khiXin = [&] { mh->dung(); };
    xin();
    nen.xinDuoc = false;
    xin();
    EXPECT_EQ(lay(), (Ds{"dừng", "dừng"}));
    EXPECT_EQ(nen.soLanMoCaiDat, 1);
}

TEST_F(ManHinhThu, cacLoiKhiBatDau) {
    nen.ketQuaLietKe = std::vector<ManHinh::Nguon>{};
    xin();
    EXPECT_EQ(lay(), Ds{"lỗi Không tìm thấy màn hình nào"});
    nen.ketQuaLietKe = loiHeThong;
    xin();
    EXPECT_EQ(lay(), Ds{"lỗi bị thu hồi"});

    nen.ketQuaLietKe = std::vector{manHinh(7, "Trái", 0)};
    nen.loiMoLuong = Loi{"hệ thống", 1, "không thêm được"};
    xin();
    EXPECT_EQ(lay(), Ds{"lỗi không thêm được"});
    nen.loiMoLuong.reset();

    xin();
    traLoi(loiHeThong);
    EXPECT_EQ(lay(), (Ds{"dừng", "lỗi bị thu hồi"}));
    EXPECT_FALSE(luong().con);
    EXPECT_FALSE(mh->dangPhat());
    EXPECT_TRUE(nen.thuc.empty());
    EXPECT_EQ(vong.soHenDangCho(), 0U);
}

TEST_F(ManHinhThu, mayChuKhongMoDuocThiKhongMoLuong) {
    chiaSe();  // for the same reason as in HetSocket
    mh->dung();
    lay();
    nen.luong.clear();
    {
        HetSocket het;
        xin();
    }
    ASSERT_EQ(nhatKy.size(), 1U);
    EXPECT_TRUE(nhatKy[0].starts_with("lỗi ") && nhatKy[0].size() > std::string("lỗi ").size()) << nhatKy[0];
    EXPECT_TRUE(nen.luong.empty());
    lay();
    chiaSe();
}

TEST_F(ManHinhThu, dungVuotTruocBatDau) {
    nen.giuLietKe = true;
    mh->batDau(0);
    mh->dung();
    nen.traLietKe();
    vong.xa();
    EXPECT_TRUE(nen.luong.empty());
    EXPECT_EQ(lay(), Ds{"dừng"});

    // The answer is already on its way through the main queue.
    mh->batDau(0);
    nen.traLietKe();
    mh->dung();
    vong.xa();
    EXPECT_TRUE(nen.luong.empty());
    EXPECT_EQ(lay(), Ds{"dừng"});

    // The capture is already starting.
    nen.giuLietKe = false;
    xin();
    mh->dung();
    EXPECT_FALSE(luong().con);
    traLoi();
    traLoi(loiHeThong);
    biDung(loiHeThong);
    EXPECT_FALSE(mh->dangPhat());
    EXPECT_EQ(lay(), Ds{"dừng"});

    // The newest of two requests counts, and is not lost with the older one's capture.
    xin(0);
    nen.giuLietKe = true;
    mh->batDau(0);
    mh->batDau(1);
    traLoi(loiHeThong);
    EXPECT_EQ(lay(), (Ds{"dừng", "lỗi bị thu hồi"}));
    const auto truoc = nen.luong.size();
    nen.traLietKe();
    vong.xa();
    ASSERT_EQ(nen.luong.size(), truoc + 1);
    EXPECT_EQ(luong().nguon.ma, 9U);
}

TEST_F(ManHinhThu, batDauKhiDangPhatThayChoCaiTruoc) {
    chiaSe();
    const auto khach = vaoXem();
    const auto cu = nen.luong.back();
    const std::string urlCu = url;
    xin(1);
    EXPECT_FALSE(cu->con);
    EXPECT_EQ(cu->soLanDung, 1);
    EXPECT_FALSE(conNghe());
    EXPECT_NE(khach->docHet(), KhachThu::Doc::quaHan) << "the viewer of the previous share is let go";
    EXPECT_TRUE(mh->dangPhat());
    // Late callbacks of the previous capture are nobody's business any more.
    cu->phiaNhan.khiBiDung(loiHeThong);
    cu->phiaNhan.khiCoKhung(std::make_unique<KhungGia>("cũ"));
    traLoi();
    EXPECT_EQ(lay(), Ds{"url"});
    EXPECT_NE(url, urlCu);
    EXPECT_EQ(nen.thuc, std::vector{true});
    EXPECT_EQ(vong.soHenDangCho(), 1U) << "one viewer watch";

    // A request that fails before it takes the place leaves the share alone.
    nen.ketQuaLietKe = loiHeThong;
    xin();
    EXPECT_EQ(lay(), Ds{"lỗi bị thu hồi"});
    EXPECT_TRUE(mh->dangPhat() && luong().con && conNghe());
    // One that fails afterwards leaves nothing behind.
    nen.ketQuaLietKe = std::vector{manHinh(7, "Trái", 0)};
    nen.loiMoLuong = loiHeThong;
    xin();
    EXPECT_EQ(lay(), Ds{"lỗi bị thu hồi"});
    EXPECT_FALSE(mh->dangPhat() || luong().con || conNghe());
    EXPECT_EQ(nen.thuc, (std::vector{true, false}));
}

TEST_F(ManHinhThu, heThongDungLuong) {
    chiaSe();
    ASSERT_TRUE(dieuKhien.lam(R"({"t":"key_down","code":"KeyA"})"));
    biDung(loiHeThong);
    EXPECT_EQ(lay(), Ds{"lỗi bị thu hồi"}) << "and not by itself";
    EXPECT_EQ(dieuKhien.dangGiu(), 0U);
    EXPECT_FALSE(mh->dangPhat() || luong().con || conNghe());
    EXPECT_EQ(nen.thuc, (std::vector{true, false}));
    vong.tien(60);
    EXPECT_EQ(lay(), Ds{});
}

TEST_F(ManHinhThu, manHinhDoiThiMoLaiTrenCungMayChu) {
    chiaSe();
    const auto khach = vaoXem();
    auto moi = manHinh(7, "Trái", 100);
    moi.diemAnh = {1280, 720};
    nen.ketQuaLietKe = std::vector{manHinh(9, "", 0), moi};
    biDung(loiDoi);
    ASSERT_EQ(nen.luong.size(), 2U);
    EXPECT_FALSE(nen.luong[0]->con);
    EXPECT_EQ(luong().nguon.ma, 7U);
    EXPECT_EQ(luong().cauHinh[0].co, (KichThuoc{1280, 720}));
    EXPECT_EQ(dieuKhien.khungManHinh().x, 100);
    traLoi();
    EXPECT_TRUE(mh->dangPhat());
    coKhung("sau");
    EXPECT_EQ(anhKe(*khach), "sau") << "the viewer has stayed";
    EXPECT_EQ(lay(), Ds{}) << "same address, nothing to tell";
    EXPECT_EQ(nen.thuc, std::vector{true});

    // Changing on and on does not spin.
    biDung(loiDoi);
    EXPECT_EQ(nen.luong.size(), 2U);
    vong.tien(0.6);
    EXPECT_EQ(nen.luong.size(), 3U);
    traLoi();

    vong.tien(5);
    nen.ketQuaLietKe = std::vector{manHinh(9, "", 0)};
    biDung(loiDoi);
    EXPECT_EQ(lay(), Ds{"lỗi Màn hình đang chia sẻ không còn nữa"});
    EXPECT_FALSE(mh->dangPhat() || luong().con || conNghe());
}

TEST_F(ManHinhThu, manHinhDoiGiuaChung) {
    // While the capture is still starting: the address is told once the new one runs.
    xin();
    biDung(loiDoi);
    EXPECT_EQ(lay(), Ds{});
    traLoi();
    EXPECT_EQ(lay(), Ds{"url"});
    // A stop while the display is looked for.
    vong.tien(5);
    nen.giuLietKe = true;
    biDung(loiDoi);
    mh->dung();
    nen.traLietKe();
    vong.xa();
    EXPECT_EQ(lay(), Ds{"dừng"});
    EXPECT_FALSE(luong().con);
    // A capture that does not come back, and a list that does not.
    nen.giuLietKe = false;
    chiaSe();
    vong.tien(5);
    biDung(loiDoi);
    traLoi(loiHeThong);
    EXPECT_EQ(lay(), (Ds{"dừng", "lỗi bị thu hồi"}));
    chiaSe();
    vong.tien(5);
    nen.ketQuaLietKe = loiHeThong;
    biDung(loiDoi);
    EXPECT_EQ(lay(), Ds{"lỗi bị thu hồi"});
    EXPECT_FALSE(mh->dangPhat());
}

TEST_F(ManHinhThu, datCanh) {
    mh->datCanh(5000);
    EXPECT_EQ(mh->caoToiDa(), 2880);
    chiaSe();
    EXPECT_EQ(luong().cauHinh[0].co, (KichThuoc{3840, 2160}));
    mh->datCanh(2800);
    EXPECT_EQ(luong().cauHinh.size(), 1U);
    mh->datCanh(1080);
    EXPECT_EQ(mh->caoToiDa(), 1080);
    ASSERT_EQ(luong().cauHinh.size(), 2U);
    EXPECT_EQ(luong().cauHinh[1].co, (KichThuoc{1920, 1080}));
    mh->dung();
    mh->datCanh(480);
    EXPECT_EQ(luong().cauHinh.size(), 2U) << "no stream any more";
}

TEST_F(ManHinhThu, khungDenNguoiXem) {
    chiaSe();
    coKhung("chưa ai xem");
    const auto a = vaoXem();
    EXPECT_EQ(anhKe(*a), "chưa ai xem") << "kept for the first viewer";
    const auto b = vaoXem();
    EXPECT_EQ(anhKe(*b), "chưa ai xem") << "a still screen, shown at once";
    nen.hangDoi.tien(1);
    for (KhachXem* khach : {a.get(), b.get()})
        EXPECT_EQ(anhKe(*khach), "chưa ai xem") << "the boundary after it";
    coKhung("đổi");
    for (KhachXem* khach : {a.get(), b.get()})
        EXPECT_EQ(anhKe(*khach), "đổi");
}

TEST_F(ManHinhThu, batDauVaDungTrongLucKhungDenTuLuongKhac) {
    std::mutex khoa;
    std::function<void(std::unique_ptr<ManHinh::Khung>)> dich;
    std::atomic<bool> thoi{false};
    std::thread hangKhung([&] {
        while (!thoi) {
            nen.hangDoi.tien(0.1);
            const auto nay = [&] {
                const std::lock_guard giu(khoa);
                return dich;
            }();
            if (nay) nay(std::make_unique<KhungGia>(std::string(50'000, 'k')));
            std::this_thread::yield();
        }
    });
    for (int lan = 0; lan < 10; ++lan) {
        xin(lan);
        {
            const std::lock_guard giu(khoa);
            dich = luong().phiaNhan.khiCoKhung;
        }
        traLoi();
        KhachXem khach(url);
        EXPECT_FALSE(khach.layToi("image/jpeg").empty());
        if (lan % 2 == 0) mh->dung();  // else the next share takes its place
    }
    mh.reset();
    thoi = true;
    hangKhung.join();
}

TEST_F(ManHinhThu, khongConAiXemThiTuDung) {
    chiaSe();
    vong.tien(3600);
    EXPECT_TRUE(mh->dangPhat()) << "waits for its first viewer";
    auto khach = vaoXem();
    vong.tien(60);
    EXPECT_TRUE(mh->dangPhat());
    ASSERT_TRUE(dieuKhien.lam(R"({"t":"key_down","code":"KeyA"})"));
    vong.tien(2);
    EXPECT_EQ(dieuKhien.dangGiu(), 1U) << "somebody is there to let go of it";
    khach.reset();
    // Nothing tells when the server has noticed that a viewer left; no wait here is longer than its own.
    EXPECT_TRUE(choDen([&] {
        vong.tien(2);
        return dieuKhien.dangGiu() == 0;
    }));
    EXPECT_TRUE(mh->dangPhat()) << "they may come back";
    EXPECT_TRUE(choDen([&] {
        vong.tien(2);
        return !mh->dangPhat();
    }));
    EXPECT_EQ(lay(), (Ds{"dừng", "tự dừng"}));
    EXPECT_FALSE(luong().con || conNghe());
    EXPECT_EQ(nen.thuc, (std::vector{true, false}));
    vong.tien(60);
    EXPECT_EQ(lay(), Ds{});
}

TEST_F(ManHinhThu, huyGiuaChungKhongConGiChayToi) {
    chiaSe();
    const auto cu = nen.luong.back();
    mh->hoiDanhSach([&](const auto&) { nhatKy.push_back("danh sách"); });
    mh.reset();
    EXPECT_FALSE(cu->con);
    cu->phiaNhan.khiBiDung(loiHeThong);
    cu->phiaNhan.khiCoKhung(std::make_unique<KhungGia>("muộn"));
    vong.tien(60);
    nen.hangDoi.tien(60);
    EXPECT_EQ(lay(), Ds{});
    EXPECT_EQ(nen.thuc, (std::vector{true, false}));
    EXPECT_FALSE(conNghe());
}
