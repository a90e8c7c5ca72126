// literal_reader.h - reading a +CPBR answer step by step as the rules are worded: one search of the
// whole text for every end flag, every buffer cleared and copied, the formatted scan for each line.
// The yardstick of the parser benchmark; nothing else uses it.
#ifndef QALT_BENCH_LITERAL_READER_H_
#define QALT_BENCH_LITERAL_READER_H_

#include "qalt_at/parser.h"
#include "qalt_at/phonebook_records.h"

namespace literal {

int parse(char* text, AtRes* answer);
void read_entries(AtRes* answer, PbItemList* list);

}  // namespace literal

#endif  // QALT_BENCH_LITERAL_READER_H_
