#pragma once
// Main thread. The platform, made once by main: it owns every ground and lends each by reference.

#include <memory>
#include <string>
#include <vector>

#include "Cau.hpp"
#include "ChiBao.hpp"
#include "CuaSo.hpp"
#include "DieuKhien.hpp"
#include "HangDoi.hpp"
#include "Khay.hpp"
#include "KiemQuyen.hpp"
#include "ManHinh.hpp"
#include "MayChuNhan.hpp"
#include "MotBan.hpp"
#include "NenChung.hpp"
#include "TuKhoiDong.hpp"
#include "UngDung.hpp"

namespace tovira {

struct NenTang {
    virtual ~NenTang() = default;

    // Implemented once by each platform. Absent when it cannot be used at all (no display, say); the reason
    // has then been written to standard error. `motBan`, which must outlive it, learns when this program is
    // certain to run.
    [[nodiscard]] static std::unique_ptr<NenTang> tao(int& soThamSo, char** thamSo, MotBan& motBan);

    // The folder of the packaged web application, named "giao-dien"; may not exist.
    [[nodiscard]] virtual std::string thuMucGiaoDien() const = 0;

    [[nodiscard]] virtual VongLap& vongLap() = 0;
    [[nodiscard]] virtual CaiDat& caiDat() = 0;
    [[nodiscard]] virtual HopBao& hopBao() = 0;
    [[nodiscard]] virtual MoDiaChi& moDiaChi() = 0;
    [[nodiscard]] virtual TepNguoiDung& tepNguoiDung() = 0;
    [[nodiscard]] virtual TuKhoiDong& tuKhoiDong() = 0;
    [[nodiscard]] virtual DieuKhien::Nen& dieuKhien() = 0;
    [[nodiscard]] virtual ManHinh::Nen& manHinh() = 0;
    [[nodiscard]] virtual Cau::Nen& xinQuyen() = 0;
    [[nodiscard]] virtual MayChuNhan::Nen& mayChuNhan() = 0;
    [[nodiscard]] virtual CuaSo::NenCua& cua() = 0;
    [[nodiscard]] virtual CuaSo::NenTrang& trang() = 0;
    [[nodiscard]] virtual CuaSo::NenTach& tach() = 0;
    [[nodiscard]] virtual Khay::Nen& khay() = 0;
    [[nodiscard]] virtual ChiBao::Nen& chiBao() = 0;
    [[nodiscard]] virtual UngDung::Nen& ungDung() = 0;

    // Runs the platform's event loop with `ungDung` as its delegate: launching, reopening, menu actions and
    // termination arrive there. Returns the process's exit status when the loop ends.
    virtual int chay(UngDung& ungDung, UngDung::KhoiDong cach) = 0;
};

}  // namespace tovira
