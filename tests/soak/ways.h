// ways.h - the two ways to the phonebook: the C functions and phonebook.hpp.
#ifndef QALT_SOAK_WAYS_H_
#define QALT_SOAK_WAYS_H_

#include <memory>
#include <optional>
#include <string>

#include "qalt_at/phonebook.hpp"
#include "tests/soak/ledger.h"

namespace soak {

class Way {
 public:
  virtual ~Way() = default;
  virtual const char* name() const = 0;
  // Whether the call succeeded. A write of no content deletes.
  virtual bool write(int index, const Content& content) = 0;
  // None when the call failed. A text that is not coded as it must be shows as itself.
  virtual std::optional<Contents> read(int first, int last) = 0;
};

class CFunctions : public Way {
 public:
  const char* name() const override { return "C"; }
  bool write(int index, const Content& content) override;
  std::optional<Contents> read(int first, int last) override;
};

class CppHeader : public Way {
 public:
  explicit CppHeader(qalt::Phonebook& book) : book_(book) {}
  const char* name() const override { return "phonebook.hpp"; }
  bool write(int index, const Content& content) override;
  std::optional<Contents> read(int first, int last) override;
  // What the last call said when it failed.
  const std::string& error() const { return error_; }
  // Whether the last write was answered OK and something else was found stored.
  bool differs() const { return differs_; }

 private:
  void failed(const qalt::Error& error);

  qalt::Phonebook& book_;
  std::string error_;
  bool differs_ = false;
};

}  // namespace soak

#endif  // QALT_SOAK_WAYS_H_
