#pragma once
// Any thread. Going down a tree of folders by descriptor, one name at a time, never through a link.

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "SoTep.hpp"

namespace tovira {

// The absolute path that `goc` (absolute, without links) followed by `con` leads to when every link on the
// way is followed; what does not exist is appended as it is. Links that go round in circles are left as they
// are.
[[nodiscard]] std::string giaiLienKet(const std::string& goc, const std::vector<std::string_view>& con);

// Flushes a folder's list of names to disk, where the folder may be read and the file system can.
void dongBoThuMuc(int thuMuc);

class DiTheoThuMuc {
  public:
    enum class KhiTao : std::uint8_t { dongBo, thoi };  // what follows on making a folder

    // Starts in the folder that `goc` is open on, which must live as long.
    DiTheoThuMuc(int goc, KhiTao khiTao) : goc_(goc), khiTao_(khiTao) {}
    // Takes back the folders that it has made, as far as they are empty.
    ~DiTheoThuMuc();
    DiTheoThuMuc(const DiTheoThuMuc&) = delete;
    DiTheoThuMuc& operator=(const DiTheoThuMuc&) = delete;

    // Steps into the folder `ten`, making it when it is missing. False when it is anything else.
    [[nodiscard]] bool vao(const std::string& ten);
    // Where it stands.
    [[nodiscard]] int o() const { return o_ ? o_.so() : goc_; }
    // What was made stays.
    void giuLai() { daTao_.clear(); }
    // Ends the walk; what was made stays. Invalid when no step was taken.
    [[nodiscard]] SoTep layO();

  private:
    int goc_;
    KhiTao khiTao_;
    SoTep o_;
    std::vector<std::string> daTao_;  // the last names of the way to o_
};

}  // namespace tovira
