#include "Json.hpp"

#include <fast_float/fast_float.h>

#include <algorithm>
#include <cmath>
#include <cstring>
#include <limits>

#include "KyTu.hpp"

namespace tovira {

namespace {

constexpr bool laChuSo(char c) {
    return c >= '0' && c <= '9';
}
constexpr bool laTrang(char c) {
    return c == ' ' || c == '\t' || c == '\n' || c == '\r';
}

// Bytes at which the plain run of a text ends: its closing quote, an escape, and what must not stand in it
// (control characters, and with them the NUL behind the input).
constexpr std::array<bool, 256> hetDoanThuong = [] {
    std::array<bool, 256> ra{};
    for (std::size_t c = 0; c < 0x20; ++c)
        ra[c] = true;
    ra['"'] = ra['\\'] = true;
    return ra;
}();

int giaTriHex(char c) {
    if (laChuSo(c)) return c - '0';
    if (c >= 'a' && c <= 'f') return c - 'a' + 10;
    if (c >= 'A' && c <= 'F') return c - 'A' + 10;
    return -1;
}

// Writes code point `ma` as UTF-8 and answers where it ends. A surrogate becomes what no UTF-8 contains.
char* vietUtf8(std::uint32_t ma, char* ra) {
    const auto noi = [&](int doi) { *ra++ = static_cast<char>(0x80 | ((ma >> doi) & 0x3F)); };
    if (ma < 0x80) {
        *ra++ = static_cast<char>(ma);
    } else if (ma < 0x800) {
        *ra++ = static_cast<char>(0xC0 | (ma >> 6));
        noi(0);
    } else if (ma < 0x10000) {
        *ra++ = static_cast<char>(0xE0 | (ma >> 12));
        noi(6);
        noi(0);
    } else {
        *ra++ = static_cast<char>(0xF0 | (ma >> 18));
        noi(12);
        noi(6);
        noi(0);
    }
    return ra;
}

}  // namespace

// One walk over the text, which is decoded in place: a decoded text is never longer than it was written.
// Every step starts at p_, leaves p_ behind what it has read, and answers false when that is not JSON. The
// NUL behind the text is no part of any value, so that no step needs to ask for the end.
class DoiTuongJson::BoDoc {
  public:
    BoDoc(DoiTuongJson& kq, std::size_t dai) : kq_(kq), vung_(kq.vung_.dau()), p_(vung_), het_(vung_ + dai) {}

    bool doc() {
        Muc goc{};
        boTrang();
        if (*p_ != '{' || !doiTuong(goc)) return false;
        boTrang();
        return p_ == het_;
    }

  private:
    void boTrang() {
        while (laTrang(*p_))
            ++p_;
    }

    // The next byte that is no white space must be `c`.
    bool dau(char c) {
        boTrang();
        if (*p_ != c) return false;
        ++p_;
        return true;
    }

    bool giaTri(Muc& muc) {
        boTrang();
        switch (*p_) {
            case '"':
                muc.loai = Loai::chu;
                return chuoi(muc.chu);
            case '{':
                return doiTuong(muc);
            case '[':
                return mang(muc);
            case 't':
                return tu("true", muc, Loai::so, 1);
            case 'f':
                return tu("false", muc, Loai::so, 0);
            case 'n':
                return tu("null", muc, Loai::khac, 0);
            default:
                muc.loai = Loai::so;
                return so(muc.so);
        }
    }

    bool tu(std::string_view chu, Muc& muc, Loai loai, double so) {
        if (std::strncmp(p_, chu.data(), chu.size()) != 0) return false;
        p_ += chu.size();
        muc.loai = loai;
        muc.so = so;
        return true;
    }

    bool doiTuong(Muc& muc) {
        muc.loai = Loai::khac;
        return khoi('}', [this] {
            Muc thanhVien{};
            boTrang();
            if (*p_ != '"' || !chuoi(thanhVien.khoa) || !dau(':') || !giaTri(thanhVien)) return false;
            if (sau_ == 1) kq_.muc_.them(thanhVien);
            return true;
        });
    }

    // The texts of a member's array are kept in front of the member itself.
    bool mang(Muc& muc) {
        muc.loai = Loai::mangChu;
        return khoi(']', [this, &muc] {
            Muc phanTu{};
            if (!giaTri(phanTu)) return false;
            if (phanTu.loai != Loai::chu) {
                muc.loai = Loai::khac;
            } else if (sau_ == 2) {
                phanTu.loai = Loai::phanTu;
                kq_.muc_.them(phanTu);
                ++muc.soChu;
            }
            return true;
        });
    }

    // An opening bracket, any number of `phan` with commas between them, and `dong`.
    template <class Phan>
    bool khoi(char dong, Phan phan) {
        ++p_;
        if (++sau_ > sauNhat) return false;
        if (!dau(dong)) {
            do {
                if (!phan()) return false;
            } while (dau(','));
            if (!dau(dong)) return false;
        }
        --sau_;
        return true;
    }

    // The conversion is more liberal than JSON in three places: zeros in front, and no digit before or behind
    // the point.
    bool so(double& ra) {
        const char* nguyen = p_ + (*p_ == '-' ? 1 : 0);
        if (!laChuSo(*nguyen) || (*nguyen == '0' && laChuSo(nguyen[1]))) return false;
        const char* cuoi = fast_float::from_chars(p_, het_, ra).ptr;
        const char* cham = std::find(nguyen, cuoi, '.');
        if (cham != cuoi && !laChuSo(cham[1])) return false;
        p_ += cuoi - p_;
        return std::isfinite(ra);
    }

    bool chuoi(Doan& ra) {
        char* const dau = ++p_;
        char* viet = dau;
        bool canXet = false;
        for (;;) {
            char* const doan = p_;
            unsigned cao = 0;
            for (; !hetDoanThuong[static_cast<unsigned char>(*p_)]; ++p_)
                cao |= static_cast<unsigned char>(*p_);
            canXet |= cao >= 0x80;
            if (viet != doan) std::memmove(viet, doan, static_cast<std::size_t>(p_ - doan));
            viet += p_ - doan;
            if (*p_ == '"') break;
            if (*p_ != '\\' || !thoat(viet)) return false;
            canXet = true;
        }
        ++p_;
        ra = {static_cast<std::uint32_t>(dau - vung_), static_cast<std::uint32_t>(viet - dau)};
        return !canXet || laUtf8(kq_.lay(ra));
    }

    bool thoat(char*& viet) {
        constexpr std::string_view ten = "\"\\/bfnrt";
        constexpr std::string_view nghia = "\"\\/\b\f\n\r\t";
        const char c = p_[1];
        if (c == 'u') return thoatU(viet);
        const auto i = ten.find(c);
        if (i == std::string_view::npos) return false;
        *viet++ = nghia[i];
        p_ += 2;
        return true;
    }

    // \uXXXX, together with the one behind it where the two are a surrogate pair.
    bool thoatU(char*& viet) {
        std::uint32_t ma = 0;
        if (!maHex(ma)) return false;
        if (ma >= 0xD800 && ma < 0xDC00 && p_[0] == '\\' && p_[1] == 'u') {
            std::uint32_t sau = 0;
            if (!maHex(sau) || sau < 0xDC00 || sau >= 0xE000) return false;
            ma = 0x10000 + ((ma - 0xD800) << 10) + (sau - 0xDC00);
        }
        viet = vietUtf8(ma, viet);
        return true;
    }

    bool maHex(std::uint32_t& ra) {
        p_ += 2;
        for (int i = 0; i < 4; ++i, ++p_) {
            const int so = giaTriHex(*p_);
            if (so < 0) return false;
            ra = ra * 16 + static_cast<std::uint32_t>(so);
        }
        return true;
    }

    DoiTuongJson& kq_;
    char* const vung_;
    char* p_;
    const char* const het_;
    int sau_ = 0;
};

std::optional<DoiTuongJson> DoiTuongJson::doc(std::string_view utf8) {
    std::optional<DoiTuongJson> kq(std::in_place);
    if (!kq->nap(utf8)) kq.reset();
    return kq;
}

bool DoiTuongJson::nap(std::string_view utf8) {
    if (utf8.size() >= std::numeric_limits<std::uint32_t>::max()) return false;
    vung_.datCo(utf8.size() + 1);
    char* vung = vung_.dau();
    std::copy(utf8.begin(), utf8.end(), vung);
    vung[utf8.size()] = '\0';
    return BoDoc(*this, utf8.size()).doc();
}

// Keys are short and mostly differ in length or in their first byte, which are cheaper to look at than a
// call.
const DoiTuongJson::Muc* DoiTuongJson::tim(std::string_view khoa) const {
    const char* vung = vung_.dau();
    const Muc* dau = muc_.dau();
    for (const Muc* muc = dau + muc_.so(); muc != dau;) {
        --muc;
        if (muc->khoa.dai != khoa.size() || muc->loai == Loai::phanTu) continue;
        const char* ten = vung + muc->khoa.dau;
        if (khoa.empty() || (*ten == khoa[0] && std::memcmp(ten, khoa.data(), khoa.size()) == 0)) return muc;
    }
    return nullptr;
}

std::optional<std::string_view> DoiTuongJson::chu(std::string_view khoa) const {
    const Muc* muc = tim(khoa);
    if (muc == nullptr || muc->loai != Loai::chu) return std::nullopt;
    return lay(muc->chu);
}

std::optional<double> DoiTuongJson::so(std::string_view khoa) const {
    const Muc* muc = tim(khoa);
    if (muc == nullptr || muc->loai != Loai::so) return std::nullopt;
    return muc->so;
}

std::optional<std::vector<std::string_view>> DoiTuongJson::mangChu(std::string_view khoa) const {
    const Muc* muc = tim(khoa);
    if (muc == nullptr || muc->loai != Loai::mangChu) return std::nullopt;
    std::vector<std::string_view> ra;
    ra.reserve(muc->soChu);
    for (const Muc* phanTu = muc - muc->soChu; phanTu != muc; ++phanTu)
        ra.push_back(lay(phanTu->chu));
    return ra;
}

}  // namespace tovira
