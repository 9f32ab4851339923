#pragma once
// A capture source that plays what a test scripts, on a frame queue that the test turns by hand.

#include <memory>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "ManHinh.hpp"
#include "gia/VongLapGia.hpp"

namespace tovira::gia {

// A frame whose "JPEG" is a text. `soLanMa` counts its encodings, where given.
class KhungGia final : public ManHinh::Khung {
  public:
    explicit KhungGia(std::string anh, TrangThaiKhung trangThai = TrangThaiKhung::daDu,
                      std::shared_ptr<int> soLanMa = nullptr)
        : anh_(std::move(anh)), trangThai_(trangThai), soLanMa_(std::move(soLanMa)) {}

    TrangThaiKhung trangThai() const override { return trangThai_; }
    bool maHoa(double chatLuong, std::vector<std::byte>& ra) override {
        if (soLanMa_) ++*soLanMa_;
        if (anh_ == hong || chatLuong != 0.95) return false;
        const auto byte = std::as_bytes(std::span(anh_));
        ra.insert(ra.end(), byte.begin(), byte.end());
        return true;
    }

    // A frame of this text cannot be encoded.
    static constexpr std::string_view hong = "hỏng";

  private:
    std::string anh_;
    TrangThaiKhung trangThai_;
    std::shared_ptr<int> soLanMa_;
};

class NenManHinhGia final : public ManHinh::Nen {
  public:
    // What a test sees of a stream, also after it is gone.
    struct LuongThay {
        ManHinh::Nguon nguon;
        std::vector<ManHinh::CauHinh> cauHinh;  // the first, then every change
        ManHinh::PhiaNhan phiaNhan;
        std::function<void(KetQua<void>)> xong;  // set once it was started
        int soLanDung = 0;
        bool con = true;
    };
    using LietKe = KetQua<std::vector<ManHinh::Nguon>>;

    bool duoc = true;
    bool xinDuoc = false;
    std::function<void()> khiXin;  // what happens while the user is being asked
    LietKe ketQuaLietKe = std::vector<ManHinh::Nguon>{};
    bool giuLietKe = false;  // hold the answers back until traLietKe
    std::optional<Loi> loiMoLuong;
    VongLapGia hangDoi;

    int soLanXin = 0;
    int soLanMoCaiDat = 0;
    std::vector<bool> thuc;
    std::vector<std::shared_ptr<LuongThay>> luong;
    std::vector<std::function<void(LietKe)>> choLietKe;

    void traLietKe() {
        for (const auto& xong : std::exchange(choLietKe, {}))
            xong(ketQuaLietKe);
    }

    bool duocGhi() override { return duoc; }
    bool xinGhi() override {
        ++soLanXin;
        if (khiXin) khiXin();
        return xinDuoc;
    }
    void moCaiDatGhiManHinh() override { ++soLanMoCaiDat; }
    void lietKe(std::function<void(LietKe)> xong) override {
        choLietKe.push_back(std::move(xong));
        if (!giuLietKe) traLietKe();
    }
    KetQua<std::unique_ptr<ManHinh::Luong>> moLuong(const ManHinh::Nguon& nguon,
                                                    const ManHinh::CauHinh& cauHinh,
                                                    ManHinh::PhiaNhan phiaNhan) override {
        if (loiMoLuong) return *loiMoLuong;
        luong.push_back(std::make_shared<LuongThay>());
        luong.back()->nguon = nguon;
        luong.back()->cauHinh.push_back(cauHinh);
        luong.back()->phiaNhan = std::move(phiaNhan);
        return std::unique_ptr<ManHinh::Luong>(std::make_unique<LuongGia>(luong.back()));
    }
    HangDoi& hangDoiKhung() override { return hangDoi; }
    void giuThuc(bool giu) override { thuc.push_back(giu); }

  private:
    struct LuongGia final : ManHinh::Luong {
        explicit LuongGia(std::shared_ptr<LuongThay> t) : thay(std::move(t)) {}
        ~LuongGia() override { thay->con = false; }
        void batDau(std::function<void(KetQua<void>)> xong) override { thay->xong = std::move(xong); }
        void doiCauHinh(const ManHinh::CauHinh& cauHinh) override { thay->cauHinh.push_back(cauHinh); }
        void dung() override { ++thay->soLanDung; }
        std::shared_ptr<LuongThay> thay;
    };
};

}  // namespace tovira::gia
