#pragma once
// Any thread: plain values. Units are points of the global display space: origin at the top-left corner
// of the main display, y growing downward. (On X11 a point is a pixel of the root window.)

namespace tovira {

struct Diem {
    double x = 0;
    double y = 0;
    friend bool operator==(const Diem&, const Diem&) = default;
};

struct KhungHinh {
    double x = 0;
    double y = 0;
    double rong = 0;
    double cao = 0;
    friend bool operator==(const KhungHinh&, const KhungHinh&) = default;
};

}  // namespace tovira
