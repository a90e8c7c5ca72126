// phonebook.h - the contacts of the simulated modem and the storages that hold them.
#ifndef QALT_SIM_PHONEBOOK_H_
#define QALT_SIM_PHONEBOOK_H_

#include <optional>
#include <string>
#include <vector>

#include "sim/text.h"

namespace qalt::sim {

// Types of number of 3GPP TS 24.008: unknown and international.
enum : int { kTypeUnknown = 129, kTypeInternational = 145 };

struct Contact {
  std::string number;
  int type = kTypeUnknown;
  Text name;
  std::string number2;
  std::string number3;
  std::string email;
  Text extra;
  std::string further = {};  // behind the name with the standard commands, verbatim, with its comma
};

// One storage ("SM", "ME"): places from a first index on, occupied or empty.
class Storage {
 public:
  Storage(int first_index, int size) : first_(first_index), places_(size_t(size)) {}

  int first() const { return first_; }
  int last() const { return first_ + size() - 1; }
  int size() const { return int(places_.size()); }
  int used() const;
  bool contains(int index) const { return index >= first_ && index <= last(); }
  // The contact at a place of the storage, null if it is empty.
  const Contact* find(int index) const;
  void put(int index, Contact contact) { place(index) = std::move(contact); }
  void erase(int index) { place(index).reset(); }
  std::optional<int> first_free() const;

 private:
  std::optional<Contact>& place(int index) { return places_.at(size_t(index - first_)); }

  int first_;
  std::vector<std::optional<Contact>> places_;
};

// A contact and its place, counted from the first index of its storage, 0 the first.
struct PlacedContact {
  int offset = 0;
  Contact contact;
};

// The contacts a simulated modem has unless it is given others: several scripts, characters that
// are hard on AT parsers, and gaps between the places.
std::vector<PlacedContact> builtin_sim_contacts();
std::vector<PlacedContact> builtin_device_contacts();

}  // namespace qalt::sim

#endif  // QALT_SIM_PHONEBOOK_H_
