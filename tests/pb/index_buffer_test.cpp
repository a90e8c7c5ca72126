#include <gtest/gtest.h>

#include <cstring>

#include "qalt_at/phonebook.h"

namespace {

PbItem item_at(int32_t index, const char* text) {
  PbItem item = {};
  item.storageIndex = index;
  std::strncpy(item.text, text, sizeof item.text - 1);
  return item;
}

int write_at(int32_t index, const char* text = "x") {
  const PbItem item = item_at(index, text);
  return PBB_WritePB(&item);
}

TEST(IndexBuffer, LowestFreeIndexFollowsWritesAndDeletes) {
  PBB_InitPbBuffer(1, 250, 250);
  EXPECT_EQ(1, PBB_GetFirstEmptyIndex());
  EXPECT_EQ(1, write_at(1));
  EXPECT_EQ(1, write_at(2));
  EXPECT_EQ(3, PBB_GetFirstEmptyIndex());
  EXPECT_EQ(1, PBB_DeletePB(1));
  EXPECT_EQ(1, PBB_GetFirstEmptyIndex());
  _PBB_UseEmptyIndex(1);
  EXPECT_EQ(0, _PBB_GetIndexIsEmpty(1));
  EXPECT_EQ(3, PBB_GetFirstEmptyIndex());
  _PBB_SetEmptyIndex(2);
  EXPECT_EQ(2, PBB_GetFirstEmptyIndex());
  for (int i = 1; i <= 250; ++i) write_at(i);
  EXPECT_EQ(-1, PBB_GetFirstEmptyIndex());
  PBB_InitPbBuffer(1, 250, 250);
  EXPECT_EQ(1, PBB_GetFirstEmptyIndex());
}

TEST(IndexBuffer, RangesThatLeaveTheBuffer) {
  const struct {
    int min, max, first;
  } cases[] = {{5, 4, -1},         {0, 0, 0},        {-7, 3, 0},
               {1023, 5000, 1023}, {1024, 5000, -1}, {INT32_MIN, INT32_MAX, 0},
               {-9, -1, -1}};
  for (const auto& c : cases) {
    PBB_InitPbBuffer(c.min, c.max, 0);
    EXPECT_EQ(c.first, PBB_GetFirstEmptyIndex()) << c.min << ".." << c.max;
  }
}

TEST(IndexBuffer, KeepsTheLastEntryWhole) {
  PBB_InitPbBuffer(1, 250, 250);
  PbItem read = item_at(-5, "untouched");
  const PbItem before = read;
  EXPECT_EQ(0, PBB_ReadPB(7, &read));
  EXPECT_EQ(0, std::memcmp(&before, &read, sizeof read));
  write_at(7, "first");
  PbItem second = item_at(7, "second");
  std::memset(second.extraText, 'e', sizeof second.extraText);
  second.coding = 3;
  PBB_WritePB(&second);
  EXPECT_EQ(1, PBB_ReadPB(7, &read));
  EXPECT_EQ(0, std::memcmp(&second, &read, sizeof read));
  // Outside the search range, but inside the buffer.
  EXPECT_EQ(1, write_at(0));
  EXPECT_EQ(1, PBB_ReadPB(0, &read));
  EXPECT_EQ(1, PBB_GetFirstEmptyIndex());
  // A discovery leaves nothing of it, not even where an index is marked used again.
  PBB_InitPbBuffer(1, 250, 250);
  const PbItem nothing = {};
  for (const int index : {0, 7}) {
    _PBB_UseEmptyIndex(index);
    EXPECT_EQ(1, PBB_ReadPB(index, &read));
    EXPECT_EQ(0, std::memcmp(&nothing, &read, sizeof read)) << index;
  }
}

TEST(IndexBuffer, IndicesItDoesNotHaveAreRefused) {
  PBB_InitPbBuffer(0, 1023, 1024);
  PbItem read = {};
  for (const int index : {-1, 1024, INT32_MIN, INT32_MAX}) {
    EXPECT_EQ(0, write_at(index));
    EXPECT_EQ(0, PBB_ReadPB(index, &read));
    EXPECT_EQ(0, PBB_DeletePB(index));
    EXPECT_EQ(0, _PBB_GetIndexIsEmpty(index));
    _PBB_UseEmptyIndex(index);
    _PBB_SetEmptyIndex(index);
  }
  EXPECT_EQ(0, PBB_WritePB(nullptr));
  EXPECT_EQ(0, PBB_ReadPB(1, nullptr));
  EXPECT_EQ(0, PBB_GetFirstEmptyIndex());
}

}  // namespace
