#include "sim/phonebook.h"

#include <algorithm>

namespace qalt::sim {

int Storage::used() const {
  return int(std::count_if(places_.begin(), places_.end(),
                           [](const auto& contact) { return contact.has_value(); }));
}

const Contact* Storage::find(int index) const {
  if (!contains(index)) return nullptr;
  const auto& contact = places_[size_t(index - first_)];
  return contact ? &*contact : nullptr;
}

std::optional<int> Storage::first_free() const {
  const auto found = std::find(places_.begin(), places_.end(), std::nullopt);
  if (found == places_.end()) return std::nullopt;
  return first_ + int(found - places_.begin());
}

std::vector<PlacedContact> builtin_sim_contacts() {
  // clang-format off
  return {
      {0,  {"+4930901820",   145, u"Anna Müller",        "+491701234567", "030555", "anna@example.org", u"Büro"}},
      {1,  {"0034915550100", 129, u"José Ángel García",  "", "", "", u""}},
      {2,  {"+302105550123", 145, u"Ελένη Παπαδάκη",     "", "", "", u""}},
      {4,  {"+74955550199",  145, u"Иван Петров",        "+79165550100", "", "ivan@example.org", u"Друг"}},
      {5,  {"+861055550123", 145, u"李小龙",             "", "", "", u"老师"}},
      {6,  {"5550106",       129, u"Anna \"Nan\" Lee",   "", "", "", u""}},
      {9,  {"5550109",       129, u"Smith, Mary; Ann",   "5550110", "5550111", "", u""}},
      {10, {"5550112",       129, u"info@example.org",   "", "", "", u""}},
      {11, {"+358401234",    145, u"Café 24h € Ångö",    "", "", "", u""}},
      {12, {"5550113",       129, u"{Home} [door] ~\\",  "", "", "", u""}},
      {15, {"*100#",         129, u"Balance",            "", "", "", u""}},
      {18, {"",              129, u"No number yet",      "", "", "", u""}},
      {19, {"112",           129, u"",                   "", "", "", u""}},
      {24, {"+12025550143",  145, u"OK",                 "", "", "", u""}},
      {31, {"+966115550123", 145, u"محمد علي",           "", "", "", u""}},
  };
  // clang-format on
}

std::vector<PlacedContact> builtin_device_contacts() {
  return {
      {0, {"+4930555", 145, u"Workshop", "", "", "", u""}},
      {3, {"110", 129, u"Polizei", "", "", "", u""}},
      {7, {"+390655501", 145, u"Caffè Perù", "", "", "", u""}},
  };
}

}  // namespace qalt::sim
