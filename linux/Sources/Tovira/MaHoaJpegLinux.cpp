#include "MaHoaJpegLinux.hpp"

#include <csetjmp>
#include <cstdio>
#include <cstring>
#include <span>
// libjpeg's header needs <cstdio> before it.
#include <jpeglib.h>

#include "BatBien.hpp"

namespace tovira {

namespace {

constexpr std::size_t coDau = std::size_t{256} << 10U;

constexpr std::uint8_t mocBatDauQuet = 0xDA;
constexpr std::uint8_t mocLapLai0 = 0xD0;
constexpr std::uint8_t mocLapLai7 = 0xD7;
constexpr std::uint8_t mocKetThuc = 0xD9;

// Length of everything up to the entropy-coded bytes: markers with a length until the scan's header ends.
std::size_t coPhanDau(std::span<const std::uint8_t> jpeg) {
    std::size_t i = 2;
    while (i + 4 <= jpeg.size()) {
        const auto moc = jpeg[i + 1];
        i += 2U + (static_cast<std::size_t>(jpeg[i + 2]) << 8U) + jpeg[i + 3];
        if (moc == mocBatDauQuet) return i;
    }
    return jpeg.size();
}

// Hands libjpeg's own failures back as a jump, its warnings to nobody.
struct LoiJpeg {
    jpeg_error_mgr mgr;
    std::jmp_buf thoat;
};

}  // namespace

// One libjpeg compressor with the memory that it writes into, both kept from frame to frame.
struct MaHoaJpeg::BoNen {
    jpeg_compress_struct c{};
    LoiJpeg loi{};
    jpeg_destination_mgr dich{};
    std::unique_ptr<std::uint8_t, GiaiPhongC> dem;
    std::size_t suc = 0;

    BoNen() {
        c.err = jpeg_std_error(&loi.mgr);
        loi.mgr.error_exit = [](j_common_ptr p) {
            std::longjmp(reinterpret_cast<LoiJpeg*>(p->err)->thoat, 1);
        };
        loi.mgr.output_message = [](j_common_ptr) {};
        jpeg_create_compress(&c);
        c.client_data = this;
        c.dest = &dich;
        dich.init_destination = [](j_compress_ptr p) { cua(p).tuDau(); };
        dich.empty_output_buffer = [](j_compress_ptr p) -> boolean { return cua(p).noiRong(); };
        dich.term_destination = [](j_compress_ptr) {};
    }
    ~BoNen() { jpeg_destroy_compress(&c); }
    BoNen(const BoNen&) = delete;
    BoNen& operator=(const BoNen&) = delete;

    static BoNen& cua(j_compress_ptr p) { return *static_cast<BoNen*>(p->client_data); }

    void tuDau() {
        if (suc == 0) noiRong();
        dich.next_output_byte = dem.get();
        dich.free_in_buffer = suc;
    }

    // libjpeg calls it when the memory is full to the last byte.
    boolean noiRong() {
        const std::size_t moi = suc == 0 ? coDau : suc * 2;
        auto* p = static_cast<std::uint8_t*>(std::realloc(dem.get(), moi));
        TOVIRA_BUOC(p != nullptr);
        static_cast<void>(dem.release());
        dem.reset(p);
        dich.next_output_byte = p + suc;
        dich.free_in_buffer = moi - suc;
        suc = moi;
        return TRUE;
    }

    [[nodiscard]] std::size_t daViet() const { return suc - dich.free_in_buffer; }

    // The jump lands here: no object with a destructor lives between setjmp and libjpeg.
    bool datKho(int rong, int chatLuong) {
        if (setjmp(loi.thoat) != 0) return false;
        c.image_width = static_cast<JDIMENSION>(rong);
        c.image_height = caoBang;
        c.input_components = 4;
        c.in_color_space = JCS_EXT_BGRX;
        jpeg_set_defaults(&c);  // baseline, 4:2:0, accurate integer DCT
        jpeg_set_quality(&c, chatLuong, TRUE);
        c.restart_in_rows = 1;
        return true;
    }

    bool nen(std::uint8_t** hang, int soHang) {
        if (setjmp(loi.thoat) != 0) {
            jpeg_abort_compress(&c);
            return false;
        }
        c.image_height = static_cast<JDIMENSION>(soHang);
        jpeg_start_compress(&c, TRUE);
        while (c.next_scanline < c.image_height)
            jpeg_write_scanlines(&c, hang + c.next_scanline, c.image_height - c.next_scanline);
        jpeg_finish_compress(&c);
        return true;
    }
};

MaHoaJpeg::MaHoaJpeg() : nen_(std::make_unique<BoNen>()) {}
MaHoaJpeg::~MaHoaJpeg() = default;

bool MaHoaJpeg::maHoa(const Anh& anh, int chatLuong, std::vector<std::byte>& ra) {
    if (anh.rong <= 0 || anh.cao <= 0) return false;
    const auto soB = static_cast<std::size_t>(soBang(anh.cao));
    if (rong_ != anh.rong || cao_ != anh.cao || chatLuong_ != chatLuong) {
        rong_ = anh.rong;
        cao_ = anh.cao;
        chatLuong_ = chatLuong;
        phienBan_.assign(soB, 0);
        bang_.resize(soB);
        dau_.clear();
        if (!nen_->datKho(rong_, chatLuong_)) return false;
    }
    for (const auto& doan : doanKhac(phienBan_, *anh.phienBan, cao_))
        if (!maHoaDoan(anh, doan)) return false;
    if (dau_.empty()) return false;

    ra.reserve(ra.size() + tongCo());
    const auto them = [&ra](std::span<const std::uint8_t> b) {
        const auto byte = std::as_bytes(b);
        ra.insert(ra.end(), byte.begin(), byte.end());
    };
    them(dau_);
    for (std::size_t b = 0; b < soB; ++b) {
        them(bang_[b]);
        const bool cuoi = b + 1 == soB;
        const std::uint8_t moc[] = {0xFF, cuoi ? mocKetThuc : static_cast<std::uint8_t>(mocLapLai0 + b % 8)};
        them(moc);
    }
    return true;
}

std::size_t MaHoaJpeg::tongCo() const {
    std::size_t co = dau_.size() + 2 * bang_.size();
    for (const auto& b : bang_)
        co += b.size();
    return co;
}

bool MaHoaJpeg::maHoaDoan(const Anh& anh, const DoanHang& doan) {
    hang_.clear();
    for (int y = doan.tu; y < doan.den; ++y)  // libjpeg only reads through these pointers
        hang_.push_back(const_cast<std::uint8_t*>(anh.diem) + static_cast<std::ptrdiff_t>(y) * anh.buoc);
    if (!nen_->nen(hang_.data(), doan.den - doan.tu)) {
        rong_ = 0;  // whatever is remembered is of no use any more
        return false;
    }
    const std::span<const std::uint8_t> jpeg(nen_->dem.get(), nen_->daViet());
    const std::size_t dau = coPhanDau(jpeg);
    const int bangDau = doan.tu / caoBang;
    // The first encoding after a change of size covers the whole picture: its header is the picture's.
    if (dau_.empty()) {
        TOVIRA_BUOC(doan == (DoanHang{0, cao_}));
        dau_.assign(jpeg.data(), jpeg.data() + dau);
    }
    chiaDoan(jpeg.data() + dau, jpeg.size() - dau, bangDau);
    for (int b = bangDau; b < bangDau + soBang(doan.den - doan.tu); ++b)
        phienBan_[static_cast<std::size_t>(b)] = (*anh.phienBan)[static_cast<std::size_t>(b)];
    return true;
}

// Cuts entropy-coded bytes at their restart markers. A byte 0xFF among the codes is followed by 0, so
// anything else behind it is a marker.
void MaHoaJpeg::chiaDoan(const std::uint8_t* dau, std::size_t dai, int bangDau) {
    const std::uint8_t* const het = dau + dai;
    auto bang = static_cast<std::size_t>(bangDau);
    const std::uint8_t* tim = dau;
    while (tim < het) {
        const auto* ff =
            static_cast<const std::uint8_t*>(std::memchr(tim, 0xFF, static_cast<std::size_t>(het - tim)));
        if (ff == nullptr || ff + 1 >= het) return;
        tim = ff + 2;
        const bool lapLai = ff[1] >= mocLapLai0 && ff[1] <= mocLapLai7;
        if (!lapLai && ff[1] != mocKetThuc) continue;
        TOVIRA_BUOC(bang < bang_.size());
        bang_[bang++].assign(dau, ff);
        dau = tim;
    }
}

}  // namespace tovira
