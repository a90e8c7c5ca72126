// import_plan.h - what an import would do, worked out whole before anything is sent.
#ifndef QALT_CLI_IMPORT_PLAN_H_
#define QALT_CLI_IMPORT_PLAN_H_

#include <map>
#include <string>
#include <vector>

#include "cli/contact_file.h"
#include "qalt_at/phonebook.hpp"

namespace qalt::cli {

struct ImportRules {
  bool replace = false;  // the phonebook becomes what the file is
  bool force = false;    // occupied indices are overwritten, surplus fields left out
  // What contacts are held to that are not stored as they are. Those of our own whole form stood in
  // a phonebook, which may hold more than this one announces.
  Limits limits = Limits::kAnnounced;
};

struct PlannedWrite {
  Contact contact;
  std::string overwritten;  // label of the contact that stands there, empty for a free index
  bool movable = false;     // any free index will do
};

struct ImportPlan {
  std::vector<int> deletes;
  std::vector<PlannedWrite> writes;
  Limits limits = Limits::kAnnounced;  // of all writes
  std::vector<int> spare;              // the indices that are free and stay so
  std::vector<Unreadable> kept;        // by a replacement: what cannot be read is not deleted
  int unchanged = 0;
  std::vector<Problem> problems;  // nothing may be written when there is one
  std::vector<Problem> dropped;   // what --force leaves out
  std::vector<Problem> tried;     // what is more than the phonebook announces
  int without_place = 0;          // records for which there is no index
};

// `stored` is all of the phonebook. A record with an index goes there; one without takes the place
// of a contact that says the same, or the lowest free index.
ImportPlan plan_import(const Phonebook& book, const Reading& stored, const FileContents& contents,
                       const ImportRules& rules);

}  // namespace qalt::cli

#endif  // QALT_CLI_IMPORT_PLAN_H_
