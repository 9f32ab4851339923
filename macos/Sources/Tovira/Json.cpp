#include "Json.hpp"

#include <fast_float/fast_float.h>
#include <rapidjson/reader.h>

#include <cmath>
#include <cstring>
#include <limits>

#include "KyTu.hpp"

namespace tovira {

// What the reader reports while it walks the text. A false answer ends the reading: not acceptable.
//
// Numbers are taken as raw digits: the library's own conversion either rounds wrongly or, for a long enough
// row of zeros behind the point, looks up a power of ten outside of its table.
struct DoiTuongJson::BoDoc : rapidjson::BaseReaderHandler<rapidjson::UTF8<>, DoiTuongJson::BoDoc> {
    BoDoc(DoiTuongJson& kq, bool coThoat) : kq_(kq), coThoat_(coThoat) {}

    bool Null() { return giaTri({Loai::khac, khoa_, {}, 0, 0}); }
    bool Bool(bool b) { return giaTri({Loai::so, khoa_, {}, b ? 1.0 : 0.0, 0}); }

    bool RawNumber(const char* chu, rapidjson::SizeType dai, bool) {
        double so = 0;
        fast_float::from_chars(chu, chu + dai, so);
        return std::isfinite(so) && giaTri({Loai::so, khoa_, {}, so, 0});
    }

    bool String(const char* chu, rapidjson::SizeType dai, bool) {
        if (!chuDung(chu, dai)) return false;
        if (trongMang_ && sau_ == 2) {
            kq_.muc_.them({Loai::phanTu, {}, doan(chu, dai), 0, 0});
            ++mang().soChu;
            return true;
        }
        return giaTri({Loai::chu, khoa_, doan(chu, dai), 0, 0});
    }

    bool Key(const char* chu, rapidjson::SizeType dai, bool) {
        if (sau_ == 1) khoa_ = doan(chu, dai);
        return chuDung(chu, dai);
    }

    bool StartObject() { return (sau_ == 0 || giaTri({Loai::khac, khoa_, {}, 0, 0})) && vao(); }
    bool EndObject(rapidjson::SizeType) { return ra(); }

    bool StartArray() {
        if (!giaTri({Loai::mangChu, khoa_, {}, 0, 0})) return false;
        if (sau_ == 1) {
            trongMang_ = true;
            viTriMang_ = kq_.muc_.so() - 1;
        }
        return vao();
    }
    bool EndArray(rapidjson::SizeType) {
        if (sau_ == 2) trongMang_ = false;
        return ra();
    }

  private:
    // Keeps a member of the object itself; a value further down only says that its array is not one of texts.
    bool giaTri(const Muc& muc) {
        if (sau_ == 1) kq_.muc_.them(muc);
        if (sau_ == 2 && trongMang_) mang().loai = Loai::khac;
        return sau_ > 0;
    }

    bool vao() { return ++sau_ <= sauNhat; }
    bool ra() {
        --sau_;
        return true;
    }

    // The reader lets the second half of a surrogate pair stand alone; decoded, it is not UTF-8.
    [[nodiscard]] bool chuDung(const char* chu, std::size_t dai) const {
        return !coThoat_ || laUtf8({chu, dai});
    }

    [[nodiscard]] Doan doan(const char* chu, std::uint32_t dai) const {
        return {static_cast<std::uint32_t>(chu - kq_.vung_.dau()), dai};
    }
    [[nodiscard]] Muc& mang() { return kq_.muc_.dau()[viTriMang_]; }

    DoiTuongJson& kq_;
    const bool coThoat_;
    int sau_ = 0;
    Doan khoa_{};
    bool trongMang_ = false;
    std::size_t viTriMang_ = 0;
};

std::optional<DoiTuongJson> DoiTuongJson::doc(std::string_view utf8) {
    // The reader works in place and stops at a NUL, so there must be none but the one put behind the text.
    if (utf8.size() >= std::numeric_limits<std::uint32_t>::max()) return std::nullopt;
    if (utf8.find('\0') != std::string_view::npos || !laUtf8(utf8)) return std::nullopt;

    std::optional<DoiTuongJson> kq(std::in_place);
    kq->vung_.datCo(utf8.size() + 1);
    char* vung = kq->vung_.dau();
    std::copy(utf8.begin(), utf8.end(), vung);
    vung[utf8.size()] = '\0';

    // Recursion is bounded: the handler refuses to go deeper than sauNhat.
    rapidjson::InsituStringStream dong(vung);
    rapidjson::Reader doc;
    BoDoc boDoc(*kq, utf8.find('\\') != std::string_view::npos);
    constexpr unsigned co = rapidjson::kParseInsituFlag | rapidjson::kParseNumbersAsStringsFlag;
    if (doc.Parse<co>(dong, boDoc).IsError()) kq.reset();
    return kq;
}

const DoiTuongJson::Muc* DoiTuongJson::tim(std::string_view khoa) const {
    for (std::size_t i = muc_.so(); i > 0; --i) {
        const Muc& muc = muc_.dau()[i - 1];
        if (muc.loai != Loai::phanTu && lay(muc.khoa) == khoa) return &muc;
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
    for (std::size_t i = 1; i <= muc->soChu; ++i)
        ra.push_back(lay(muc[i].chu));
    return ra;
}

}  // namespace tovira
