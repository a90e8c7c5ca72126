// CSV as RFC 4180 has it: a header names the columns, quotes are doubled inside quotes.
#include <algorithm>

#include "cli/contact_file.h"

namespace qalt::cli {
namespace {

struct Row {
  int line = 0;
  std::vector<std::string> cells;
};

// Cuts a text into rows; an unclosed quote ends with the text.
class RowReader {
 public:
  explicit RowReader(const std::string& text) : text_(text) {}

  bool next(Row& row) {
    if (position_ >= text_.size()) return false;
    row.line = line_;
    row.cells.assign(1, "");
    bool quoted = false;
    for (; position_ < text_.size(); ++position_) {
      const char c = text_[position_];
      if (c == '\n') ++line_;
      if (quoted) {
        if (c != '"') {
          row.cells.back() += c;
        } else if (position_ + 1 < text_.size() && text_[position_ + 1] == '"') {
          row.cells.back() += text_[++position_];
        } else {
          quoted = false;
        }
      } else if (c == '"' && row.cells.back().empty()) {
        quoted = true;
      } else if (c == ',') {
        row.cells.emplace_back();
      } else if (c == '\n') {
        ++position_;
        break;
      } else if (c != '\r' || position_ + 1 == text_.size() || text_[position_ + 1] != '\n') {
        row.cells.back() += c;
      }
    }
    unclosed_ = quoted;
    return true;
  }
  bool unclosed() const { return unclosed_; }

 private:
  const std::string& text_;
  size_t position_ = 0;
  int line_ = 1;
  bool unclosed_ = false;
};

bool is_column(const std::string& name) {
  return name == "index" || name == "coding" ||
         std::any_of(kFields.begin(), kFields.end(),
                     [&](const FieldRow& field) { return name == field.key; });
}

// The columns; problems where they cannot be used.
std::vector<std::string> read_header(const Row& row, FileContents& contents) {
  for (const std::string& name : row.cells) {
    if (!is_column(name)) {
      contents.problems.push_back(
          {row.line, "\"" + name + "\" is no column; there are index, name, number, number2, " +
                         "number3, email, extra and coding, with commas between them"});
    } else if (std::count(row.cells.begin(), row.cells.end(), name) > 1) {
      contents.problems.push_back({row.line, "column \"" + name + "\" stands twice"});
    }
  }
  return row.cells;
}

void read_cell(const std::string& column, const std::string& cell, Record& record,
               FileContents& contents) {
  if (column == "index" || column == "coding") {
    if (cell.empty()) return;
    const auto value = whole_number(cell);
    if (!value) {
      contents.problems.push_back({record.line, column + " \"" + cell + "\" is no whole number"});
      return;
    }
    (column == "index" ? record.contact.index : record.contact.coding) = *value;
    return;
  }
  for (const FieldRow& field : kFields) {
    if (column == field.key) record.contact.*field.member = cell;
  }
}

std::string in_quotes(const std::string& cell) {
  if (cell.find_first_of("\",\r\n") == cell.npos) return cell;
  std::string text = "\"";
  for (const char c : cell) text += c == '"' ? std::string("\"\"") : std::string(1, c);
  return text + "\"";
}

}  // namespace

FileContents read_csv(const std::string& text) {
  FileContents contents;
  RowReader reader(text);
  Row row;
  if (!reader.next(row)) return contents;
  const std::vector<std::string> columns = read_header(row, contents);
  if (!contents.problems.empty()) return contents;
  while (reader.next(row)) {
    if (row.cells.size() == 1 && row.cells.front().empty()) continue;
    if (row.cells.size() != columns.size()) {
      contents.problems.push_back({row.line, "has " + std::to_string(row.cells.size()) +
                                                 " cells, the header has " +
                                                 std::to_string(columns.size())});
      continue;
    }
    Record record;
    record.line = row.line;
    for (size_t k = 0; k < columns.size(); ++k) {
      read_cell(columns[k], row.cells[k], record, contents);
    }
    contents.records.push_back(std::move(record));
  }
  if (reader.unclosed()) contents.problems.push_back({row.line, "a quote is not closed"});
  return contents;
}

std::string write_csv(const std::vector<Contact>& contacts) {
  std::string text = "index";
  for (const FieldRow& field : kFields) text += std::string(",") + field.key;
  text += ",coding\r\n";
  for (const Contact& contact : contacts) {
    text += std::to_string(contact.index);
    for (const FieldRow& field : kFields) text += "," + in_quotes(contact.*field.member);
    text += "," + std::to_string(contact.coding) + "\r\n";
  }
  return text;
}

}  // namespace qalt::cli
