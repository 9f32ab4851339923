#pragma once
// Main thread. How a type's single shared instance is reached without anyone creating it behind main's back.

#include "BatBien.hpp"

namespace tovira {

// Base of a type with one shared instance: `T::chung()` is the instance that the innermost living
// `T::DatChung` named. Main sets it before the loop runs; a test sets its own in a scope.
template <class T>
class CoChung {
  public:
    [[nodiscard]] static T& chung() {
        TOVIRA_BUOC(o() != nullptr);
        return *o();
    }

    class DatChung {
      public:
        explicit DatChung(T& t) : truoc_(o()) { o() = &t; }
        ~DatChung() { o() = truoc_; }
        DatChung(const DatChung&) = delete;
        DatChung& operator=(const DatChung&) = delete;

      private:
        T* truoc_;
    };

  private:
    static T*& o() {
        static T* con = nullptr;
        return con;
    }
};

}  // namespace tovira
