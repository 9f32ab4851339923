#pragma once
// On one server's queue. The connections that a listener has accepted and what they share: the settings, the
// timer behind their deadlines, the place where unwanted bytes land.

#include <array>
#include <asio.hpp>
#include <chrono>
#include <cstddef>
#include <list>
#include <memory>

#include "LangNghe.hpp"

namespace tovira {

class KetNoiNghe;

class SoKetNoi {
  public:
    using BoChay = asio::io_context::executor_type;
    using CoSo = asio::basic_stream_socket<asio::ip::tcp, BoChay>;
    using DongHo = std::chrono::steady_clock;
    using Hen = asio::basic_waitable_timer<DongHo, asio::wait_traits<DongHo>, BoChay>;
    using MocGio = DongHo::time_point;
    using DanhSach = std::list<std::shared_ptr<KetNoiNghe>>;

    // All of them outlive this object.
    SoKetNoi(asio::io_context& v, const LangNghe::CauHinh& c, const LangNghe::PhiaNhan& p)
        : vong(v), cauHinh(c), phiaNhan(p) {}

    // Takes a connection in and starts reading its head; one too many is dropped.
    void tiepNhan(CoSo so);
    // Closes the oldest connection without a complete head, when there is one.
    bool nhuongCho();
    // Moves an answered connection to those that are only read on; too many of them cost the oldest.
    void chuyenSangNan(DanhSach::iterator cho);
    // Calls noi.khiHetHan() at `luc` instead of any earlier wish.
    void datHan(KetNoiNghe& noi, MocGio luc);
    // Closes every connection that has not been answered yet.
    void dongChuaTra() { dongHet(dangMo); }
    // Closes all.
    void tat();

    asio::io_context& vong;
    const LangNghe::CauHinh& cauHinh;
    const LangNghe::PhiaNhan& phiaNhan;
    DanhSach dangMo;   // oldest first
    DanhSach dangNan;  // answered, oldest first
    // Nobody looks at it, so all connections share it.
    std::array<std::byte, 65536> thungRac;

  private:
    static void dongHet(DanhSach& ds);
    void henQuetLuc(MocGio luc);
    void quet();

    // One timer for all connections, armed for the nearest deadline or an earlier moment.
    Hen henQuet_{vong};
    MocGio lucQuet_ = MocGio::max();
};

}  // namespace tovira
