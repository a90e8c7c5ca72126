#include "tests/simulation/client.h"

#include <array>
#include <optional>

#include "cli/context.h"
#include "cli/failure.h"
#include "cli/import_plan.h"
#include "cli/import_run.h"
#include "qalt_at/phonebook.hpp"
#include "qalt_at/qalt_at.h"

namespace qalt::simulation {
namespace {

constexpr int kSim = 0;
constexpr int kStandardItem = 0;

Outcome outcome_of(const Error& error) {
  return {int(error.cause), error.fate, error.what};
}

template <typename T>
Outcome outcome_of(const Result<T>& result) {
  if (!result) return outcome_of(result.error());
  Outcome outcome;
  if constexpr (std::is_same_v<T, Contact>) outcome.contacts = {*result};
  return outcome;
}

void set_field(PbField& field, int type, const std::string& text) {
  field.fieldType = type;
  field.pField[text.copy(field.pField, sizeof field.pField - 1)] = '\0';
}

class Program : public Client {
 public:
  Outcome open() override {
    if (!book_) book_.emplace();
    const auto info = book_->open({});
    Outcome outcome = outcome_of(info);
    if (!info) return outcome;
    outcome.first = info->first;
    outcome.last = info->last;
    outcome.name_length = info->lengths[PB_FIELD_TEXT];
    return outcome;
  }

  Outcome begin_job() override {
    job_.emplace(*book_);
    return outcome_of(job_->result());
  }
  void end_job() override { job_.reset(); }

  Outcome read(int first, int last) override {
    const auto reading = book_->read(first, last);
    Outcome outcome = outcome_of(reading);
    if (!reading) return outcome;
    outcome.contacts = reading->contacts;
    for (const Unreadable& gap : reading->unreadable) outcome.unreadable.push_back(gap.index);
    return outcome;
  }
  Outcome get(int index) override { return outcome_of(book_->get(index)); }
  Outcome add(const Contact& contact) override { return outcome_of(book_->add(contact)); }
  Outcome put(const Contact& contact) override { return outcome_of(book_->put(contact)); }
  Outcome change(int index, const Changes& changes) override {
    return outcome_of(book_->change(index, changes));
  }
  Outcome erase(int index) override { return outcome_of(book_->erase(index)); }

  Outcome import(const std::vector<Contact>& contacts) override try {
    cli::Arguments arguments;
    arguments.progress = false;
    book_.reset();
    cli::Context context(arguments);
    cli::FileContents contents;
    for (const Contact& contact : contacts) contents.records.push_back({1, contact, {}});
    Phonebook& book = context.book();
    const Reading stored = cli::take(book.read_all());
    const cli::ImportPlan plan = cli::plan_import(book, stored, contents, {});
    if (!plan.problems.empty()) return {int(Cause::kBadInput)};
    if (plan.without_place != 0) return {int(Cause::kFull)};
    cli::Tally tally;
    cli::carry_out(context, plan, tally);
    return {context.status()};
  } catch (const cli::Failure& failure) {
    return outcome_of(failure.error());
  }

  Outcome c_discover() override {
    PbParam param = {};
    Outcome outcome = {QL_getPhonebookInfo(kSim, &param)};
    outcome.first = param.MinIndex;
    outcome.last = param.MaxIndex;
    outcome.name_length = param.FieldAbility[PB_FIELD_TEXT].maxLength;
    return outcome;
  }

  Outcome c_read(int first, int last) override {
    const auto count = size_t(last - first + 1);
    std::vector<std::array<PbField, PB_FIELD_TYPES>> fields(count);
    std::vector<PhonebookEntry> entries(count, {-1, 0, nullptr, 0});
    for (size_t i = 0; i < count; ++i) entries[i].pFieldList = fields[i].data();
    Outcome outcome = {QL_getPhonebookEntry(kSim, first, last, entries.data())};
    for (const PhonebookEntry& entry : entries) {
      if (entry.storageIndex == -1) continue;
      wchar_t name[256] = {};
      const char* const digits = entry.pFieldList[PB_FIELD_TEXT].pField;
      const bool coded = QL_decodePBItem(digits, name, 256, kStandardItem) == 0;
      Contact contact;
      contact.index = entry.storageIndex;
      contact.name = coded ? detail::utf8_of(name) : "not coded: " + std::string(digits);
      contact.number = entry.pFieldList[PB_FIELD_NUMBER].pField;
      outcome.contacts.push_back(contact);
    }
    return outcome;
  }

  Outcome c_write(const Contact& contact) override {
    const auto codes = detail::code_points(contact.name);
    const std::wstring name(codes->begin(), codes->end());
    std::array<char, 1024> digits{};
    int gsm = 0;
    if (!name.empty()) {
      QL_encodePBItem(name.c_str(), digits.data(), int(digits.size()), &gsm, kStandardItem);
    }
    std::array<PbField, 2> fields{};
    set_field(fields[0], PB_FIELD_NUMBER, contact.number);
    set_field(fields[1], PB_FIELD_TEXT, digits.data());
    PhonebookEntry record = {contact.index, int(fields.size()), fields.data(), 0};
    return {QL_setPhonebookEntry(kSim, &record)};
  }

  Outcome c_erase(int index) override { return {QL_deletePhonebookEntry(kSim, index)}; }

  Outcome command(const std::string& line, uint32_t timeout_ms) override {
    AtMsg answer;
    const int code = ClientSendCmd(line.c_str(), &answer, timeout_ms);
    return {code, Fate::kNotDone, answer.aucDataBuf};
  }

 private:
  std::optional<Phonebook> book_;  // one a process
  std::optional<Phonebook::Job> job_;
};

}  // namespace
}  // namespace qalt::simulation

qalt::simulation::Client* simulation_client() {
  static qalt::simulation::Program program;
  return &program;
}
