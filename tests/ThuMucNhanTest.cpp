#include "ThuMucNhan.hpp"

#include <dlfcn.h>
#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/resource.h>

#include <array>
#include <cerrno>
#include <csignal>
#include <cstdarg>

#include "gia/ThuMucTam.hpp"

using namespace tovira;
namespace fs = std::filesystem;
using gia::docTep;
using gia::ghiTep;
using gia::lietKe;
using CacTen = std::set<std::string>;
using SoNoi = ThuMucNhan::SoNoi;

// What the system answers, on this thread, to calls of the code under test: an errno, or 0 for its own
// answer.
namespace heThong {
struct Loi {
    int fsync = 0;
    int linkat = 0;
    int tepVoDanh = 0;  // making a file without a name, as on many file systems
};
thread_local Loi loi;

template <class Ham, class... ThamSo>
int goi(Ham* /*kieu*/, const char* ten, int loiDat, ThamSo... thamSo) {
    if (loiDat == 0) return reinterpret_cast<Ham*>(::dlsym(RTLD_NEXT, ten))(thamSo...);
    errno = loiDat;
    return -1;
}
}  // namespace heThong

#if defined(O_TMPFILE)
constexpr bool coTepVoDanh = true;
constexpr int taoVoDanh = O_TMPFILE;
#else
constexpr bool coTepVoDanh = false;
constexpr int taoVoDanh = O_CREAT | O_DIRECTORY;  // no system takes both
#endif
// Some C libraries promise that their calls do not throw; a second declaration has to say the same.
#if defined(__GLIBC__)
#define KHONG_NEM noexcept
#else
#define KHONG_NEM
#endif

extern "C" {
int fsync(int tep) {
    return heThong::goi(&fsync, "fsync", heThong::loi.fsync, tep);
}
int linkat(int tu, const char* cu, int den, const char* moi, int co) KHONG_NEM {
    return heThong::goi(&linkat, "linkat", heThong::loi.linkat, tu, cu, den, moi, co);
}
int openat(int thuMuc, const char* duong, int co, ...) {
    std::va_list them;
    va_start(them, co);
    const unsigned quyen = (co & O_CREAT) != 0 || (co & taoVoDanh) == taoVoDanh ? va_arg(them, unsigned) : 0;
    va_end(them);
    const int loi = (co & taoVoDanh) == taoVoDanh ? heThong::loi.tepVoDanh : 0;
    return heThong::goi(&openat, "openat", loi, thuMuc, duong, co, quyen);
}
}

namespace {

std::span<const std::byte> byte(std::string_view chu) {
    return std::as_bytes(std::span(chu.data(), chu.size()));
}

// A folder to receive into and one beside it that nothing may reach. Compared by identity, it also lies on a
// file system that knows no file without a name.
class ThuMucNhanTest : public testing::TestWithParam<SoNoi> {
  protected:
    ThuMucNhanTest() {
        fs::create_directories(goc);
        fs::create_directories(ngoai);
        if (GetParam() == SoNoi::theoMaTep) heThong::loi.tepVoDanh = EOPNOTSUPP;
    }
    ~ThuMucNhanTest() override { heThong::loi = {}; }

    ThuMucNhan mo() { return ThuMucNhan(goc.string(), ThuMucNhan::DoBen::tuyHeThong, GetParam()); }

    using Ra = ThuMucNhan::KetCuc;
    // In two steps and in one, which must end alike.
    static Ra dat(ThuMucNhan& thuMuc, std::string_view duong, std::string_view noiDung = "x") {
        const auto dich = thuMuc.giaiDuongDan(duong);
        Ra ra = Ra::duongXau;
        if (dich) ra = thuMuc.ghi(*dich, std::array{byte(noiDung)}) ? Ra::duoc : Ra::hong;
        EXPECT_EQ(thuMuc.nhan(duong, byte(noiDung)), ra) << duong;
        return ra;
    }
    Ra dat(std::string_view duong, std::string_view noiDung = "x") {
        ThuMucNhan thuMuc = mo();
        return dat(thuMuc, duong, noiDung);
    }

    gia::ThuMucTam tam;
    fs::path goc = tam / "nhận";
    fs::path ngoai = tam / "ngoài";
};

INSTANTIATE_TEST_SUITE_P(HaiCachSo, ThuMucNhanTest, testing::Values(SoNoi::theoByte, SoNoi::theoMaTep),
                         [](const auto& muc) { return muc.param == SoNoi::theoByte ? "byte" : "maTep"; });

}  // namespace

TEST_P(ThuMucNhanTest, tepNamDungCho) {
    EXPECT_EQ(dat("ảnh/hè 2026/bãi biển.txt", "sóng"), Ra::duoc);
    EXPECT_EQ(docTep(goc / "ảnh/hè 2026/bãi biển.txt"), "sóng");
    EXPECT_EQ(dat("ảnh//hè 2026/", ""), Ra::hong);  // a folder has that name
    EXPECT_EQ(dat("ảnh/trống", ""), Ra::duoc);
    EXPECT_EQ(lietKe(goc), (CacTen{"ảnh", "ảnh/trống", "ảnh/hè 2026", "ảnh/hè 2026/bãi biển.txt"}));
    EXPECT_EQ(dat("ảnh/trống", "đầy"), Ra::duoc);
    EXPECT_EQ(docTep(goc / "ảnh/trống"), "đầy");
    for (const char* xau : {"../a", "ảnh/../../a", "/a", "~/a", "", "ảnh/./a"})
        EXPECT_EQ(dat(xau), Ra::duongXau) << xau;
    EXPECT_EQ(lietKe(tam.duong()).size(), 6U);
}

TEST_P(ThuMucNhanTest, tenGiuNguyenTungByte) {
    const std::string gop = "\u1EC7";
    const std::string tach = "e\u0323\u0302";
    EXPECT_EQ(dat(gop, "1"), Ra::duoc);
    EXPECT_EQ(dat(tach, "2"), Ra::duoc);
    EXPECT_EQ(dat("A", "3"), Ra::duoc);
    EXPECT_EQ(dat("a", "4"), Ra::duoc);
    const CacTen co = lietKe(goc);
    for (const std::string& ten : {tach, std::string("a")})
        EXPECT_TRUE(co.contains(ten) || co.size() == 2) << ten;  // two where the file system folds
    EXPECT_EQ(docTep(goc / tach), "2");
    EXPECT_EQ(docTep(goc / "a"), "4");
}

TEST_P(ThuMucNhanTest, quyenThuong) {
    const mode_t cu = ::umask(027);
    EXPECT_EQ(dat("thư mục/tệp"), Ra::duoc);
    ::umask(cu);
    EXPECT_EQ(fs::status(goc / "thư mục/tệp").permissions(), fs::perms(0640));
    EXPECT_EQ(fs::status(goc / "thư mục").permissions(), fs::perms(0750));
}

TEST_P(ThuMucNhanTest, lienKetTheoNoiNoDanToi) {
    fs::create_directories(goc / "trong/sâu");
    ghiTep(ngoai / "của người", "yên");
    const std::pair<const char*, fs::path> lienKet[] = {
        {"lối ra", ngoai},
        {"lối ra tương đối", "../ngoài"},
        {"lối vào", goc / "trong"},
        {"lối vào tương đối", "trong/sâu"},
        {"về gốc", goc},
        {"lên", ".."},
        {"ra rồi vào", "../ngoài/../nhận/trong"},
        {"lối lối ra", "lối ra"},
        {"cụt ngoài", ngoai / "chưa có"},
        {"cụt trong", goc / "chưa có"},
        {"vòng", "vòng"},
        {"tệp", ngoai / "của người"},
        {"gần giống", goc.string() + " 2"},
        {"gốc của cả máy", "/"},
    };
    for (const auto& [ten, toi] : lienKet)
        fs::create_symlink(toi, goc / ten);
    fs::create_symlink(goc / "trong", ngoai / "vào lại");
    fs::create_directory(goc.string() + " 2");
    ghiTep(goc / "chặn", "là tệp");
    const CacTen truoc = lietKe(tam.duong());

    const std::pair<std::string, Ra> bang[] = {
        {"lối ra/qua liên kết", Ra::duongXau},
        {"lối ra/thêm/qua liên kết", Ra::duongXau},
        {"lối ra/vào lại/a", Ra::duoc},  // only where it leads counts
        {"lối ra tương đối/a", Ra::duongXau},
        {"lối lối ra/a", Ra::duongXau},
        {"lên/a", Ra::duongXau},
        {"lên/nhận/b", Ra::duoc},
        {"cụt ngoài/a", Ra::duongXau},
        {"cụt ngoài/a/b", Ra::duongXau},
        {"gần giống/a", Ra::duongXau},
        {"gốc của cả máy/a", Ra::duongXau},
        {"trong/../lối ra/a", Ra::duongXau},
        {"tệp/a", Ra::duongXau},
        {"lối vào/c", Ra::duoc},
        {"lối vào/mới/d", Ra::duoc},
        {"lối vào tương đối/e", Ra::duoc},
        {"ra rồi vào/f", Ra::duoc},
        {"về gốc/g", Ra::duoc},
        {"về gốc/về gốc/lối vào/h", Ra::duoc},
        {"vòng/a", Ra::hong},
        {"chặn/a", Ra::hong},
        {"chặn/a/b", Ra::hong},
    };
    for (const auto& [duong, dung] : bang)
        EXPECT_EQ(dat(duong), dung) << duong;
    CacTen moi = lietKe(tam.duong());
    for (const std::string& ten : truoc)
        moi.erase(ten);
    EXPECT_EQ(moi, (CacTen{"nhận/trong/a", "nhận/b", "nhận/trong/c", "nhận/trong/mới", "nhận/trong/mới/d",
                           "nhận/trong/sâu/e", "nhận/trong/f", "nhận/g", "nhận/trong/h"}));
}

TEST_P(ThuMucNhanTest, phanCuoiKhongBiTheoMaBiThay) {
    ghiTep(ngoai / "đích", "yên");
    fs::create_symlink(ngoai / "đích", goc / "tới tệp");
    fs::create_symlink(ngoai, goc / "tới thư mục");
    for (const char* ten : {"tới tệp", "tới thư mục"}) {
        EXPECT_EQ(dat(ten, "mới"), Ra::duoc);
        EXPECT_TRUE(fs::is_regular_file(fs::symlink_status(goc / ten))) << ten;
    }
    EXPECT_EQ(docTep(ngoai / "đích"), "yên");
    EXPECT_EQ(lietKe(ngoai), CacTen{"đích"});
}

TEST_P(ThuMucNhanTest, hongThiKhongDeLaiGi) {
    fs::create_directories(goc / "là thư mục/có con");
    const CacTen truoc = lietKe(goc);
    const std::string ratDai(300, 'd');
    for (const std::string& duong :
         {std::string("là thư mục"), ratDai, "mới/cũng mới/" + ratDai, ratDai + "/a", "mới/" + ratDai + "/a"})
        EXPECT_EQ(dat(duong), Ra::hong) << duong;
    EXPECT_EQ(lietKe(goc), truoc);
    // A limit reached in the middle of the file.
    rlimit cu{};
    ASSERT_EQ(::getrlimit(RLIMIT_FSIZE, &cu), 0);
    const auto xuLyCu = std::signal(SIGXFSZ, SIG_IGN);
    rlimit moi = cu;
    moi.rlim_cur = 100;
    ASSERT_EQ(::setrlimit(RLIMIT_FSIZE, &moi), 0);
    const Ra ra = dat("mới/tệp to", std::string(1000, 'x'));
    ASSERT_EQ(::setrlimit(RLIMIT_FSIZE, &cu), 0);
    std::signal(SIGXFSZ, xuLyCu);
    EXPECT_EQ(ra, Ra::hong);
    EXPECT_EQ(lietKe(goc), truoc);
}

// What the disk has no room for may be found out at any of the steps.
TEST_P(ThuMucNhanTest, diaDayHayHongKhongDeLaiGi) {
    ghiTep(goc / "cũ", "nguyên");
    ThuMucNhan thuMuc(goc.string(), ThuMucNhan::DoBen::xuongDia, GetParam());
    const auto dayNgay = [](int tep) {
        SoTep day(::open("/dev/full", O_WRONLY | O_CLOEXEC));
        if (!day) day = SoTep(::open("/dev/null", O_RDONLY | O_CLOEXEC));  // not every system has a full disk
        ASSERT_EQ(::dup2(day.so(), tep), tep);
    };
    for (const char* duong : {"cũ", "mới/thêm/tệp"}) {
        EXPECT_EQ(thuMuc.nhan(duong, byte("x"), dayNgay), Ra::hong);
        for (const int loi : {ENOSPC, EDQUOT, EIO}) {
            heThong::loi.fsync = loi;
            EXPECT_EQ(thuMuc.nhan(duong, byte("x")), Ra::hong) << loi;
            heThong::loi.fsync = 0;
            heThong::loi.linkat = loi;
            if (coTepVoDanh && heThong::loi.tepVoDanh == 0) {
                EXPECT_EQ(thuMuc.nhan(duong, byte("x")), Ra::hong) << loi;
            }
            heThong::loi.linkat = 0;
        }
    }
    EXPECT_EQ(lietKe(goc), CacTen{"cũ"});
    EXPECT_EQ(docTep(goc / "cũ"), "nguyên");
    // A file system that cannot flush, a system that does not let a file be named afterwards: no failure.
    heThong::loi.fsync = EINVAL;
    heThong::loi.linkat = EPERM;
    EXPECT_EQ(thuMuc.nhan("cũ", byte("mới")), Ra::duoc);
    EXPECT_EQ(docTep(goc / "cũ"), "mới");
    EXPECT_EQ(lietKe(goc), CacTen{"cũ"});
}

TEST_P(ThuMucNhanTest, dauHieuTruocByteDauTien) {
    ThuMucNhan thuMuc = mo();
    const auto dich = thuMuc.giaiDuongDan("a");
    ASSERT_TRUE(dich);
    off_t dai = -1;
    CacTen coGi;
    EXPECT_TRUE(thuMuc.ghi(*dich, std::array{byte("x"), byte(""), byte("yz")}, [&](int tep) {
        dai = ::lseek(tep, 0, SEEK_END);
        coGi = lietKe(goc);
    }));
    EXPECT_EQ(dai, 0);
    EXPECT_FALSE(coGi.contains("a"));
#if defined(O_TMPFILE)
    // A process that is killed now leaves nothing.
    if (heThong::loi.tepVoDanh == 0 && SoTep(::open(goc.c_str(), O_TMPFILE | O_WRONLY, 0600))) {
        EXPECT_EQ(coGi, CacTen{});
    }
#endif
    EXPECT_EQ(docTep(goc / "a"), "xyz");
}

// What was resolved is walked again without following links.
TEST_P(ThuMucNhanTest, doiRuotSauKhiXetKhongDanRaNgoai) {
    fs::create_directories(goc / "a/b");
    ThuMucNhan thuMuc = mo();
    const auto dich = thuMuc.giaiDuongDan("a/b/tệp");
    ASSERT_TRUE(dich);
    fs::rename(goc / "a", goc / "a cũ");
    fs::create_directories(ngoai / "b");
    fs::create_symlink(ngoai, goc / "a");
    EXPECT_FALSE(thuMuc.ghi(*dich, std::array{byte("x")}));
    EXPECT_EQ(lietKe(ngoai), CacTen{"b"});
    EXPECT_EQ(dat(thuMuc, "a/b/tệp"), Ra::duongXau);
}

TEST_P(ThuMucNhanTest, gocBienMatDuocTaoLaiGocBiThayThiKhongTheo) {
    ThuMucNhan thuMuc = mo();
    fs::remove(goc);
    EXPECT_EQ(dat(thuMuc, "thư mục/a"), Ra::duoc);
    EXPECT_EQ(lietKe(goc), (CacTen{"thư mục", "thư mục/a"}));
    fs::rename(goc, tam / "chỗ khác");
    fs::create_directory(goc);
    EXPECT_EQ(dat(thuMuc, "b"), Ra::duoc);
    EXPECT_EQ(lietKe(goc), CacTen{"b"});
    fs::remove_all(goc);
    fs::create_symlink(ngoai, goc);
    EXPECT_EQ(dat(thuMuc, "c"), Ra::duongXau);
    fs::remove(goc);
    ghiTep(goc, "là tệp");
    EXPECT_EQ(dat(thuMuc, "d"), Ra::hong);
    EXPECT_EQ(lietKe(ngoai), CacTen{});
}

TEST(ThuMucNhan, gocDuocGiaiLienKet) {
    const gia::ThuMucTam tam;
    fs::create_directory(tam / "thật");
    fs::create_directory_symlink(tam / "thật", tam / "tên khác");
    EXPECT_EQ(ThuMucNhan((tam / "tên khác/").string()).goc(), tam / "thật");
    EXPECT_EQ(ThuMucNhan((tam / "thật/./../thật//").string()).goc(), tam / "thật");
    EXPECT_EQ(ThuMucNhan((tam / "tên khác/chưa có/con").string()).goc(), tam / "thật/chưa có/con");
    EXPECT_EQ(ThuMucNhan("/").goc(), "/");
    // The whole disk may be chosen; only nonsense is refused then.
    ThuMucNhan caMay("/", ThuMucNhan::DoBen::tuyHeThong);
    const auto dich = caMay.giaiDuongDan(std::string(tam / "thật/a").substr(1));
    ASSERT_TRUE(dich);
    EXPECT_TRUE(caMay.ghi(*dich, std::array{byte("x")}));
    EXPECT_EQ(lietKe(tam / "thật"), CacTen{"a"});
    EXPECT_TRUE(caMay.giaiDuongDan(std::string(tam / "tên khác/b").substr(1)));
}

TEST(ThuMucNhan, doBenXuongDiaCungGhiDuoc) {
    const gia::ThuMucTam tam;
    ThuMucNhan thuMuc(tam.duong().string());
    const auto dich = thuMuc.giaiDuongDan("a/b/c");
    ASSERT_TRUE(dich);
    EXPECT_TRUE(thuMuc.ghi(*dich, std::array{byte("bền")}));
    EXPECT_EQ(docTep(tam / "a/b/c"), "bền");
}
