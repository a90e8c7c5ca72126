// The index buffer: what this process knows of the phonebook's occupancy. An entry stands at the
// position of its own storage index; indices beyond the buffer are neither stored nor found.
#include <algorithm>
#include <cstring>

#include "pb/engine.h"

namespace qalt {
namespace {

PhonebookIndexBuffer g_buffer;  // zero at load, about 700 KB
// Entries from here on are as they were at load. A card fills a part of the buffer: what was never
// written takes no memory, and clearing it would change that.
int g_written_end;

bool holds(int index) {
  return index >= 0 && index < PBB_CAPACITY;
}

void set_used(int index, int32_t used) {
  if (holds(index)) g_buffer.Used[index] = used;
}

}  // namespace
}  // namespace qalt

using namespace qalt;

void PBB_InitPbBuffer(int MinIndex, int MaxIndex, int MaxEntries) {
  std::memset(g_buffer.Used, 0, sizeof g_buffer.Used);
  std::memset(g_buffer.Items, 0, sizeof(PbItem) * static_cast<size_t>(g_written_end));
  g_written_end = 0;
  g_buffer.MinIndex = MinIndex;
  g_buffer.MaxIndex = MaxIndex;
  g_buffer.MaxEntries = MaxEntries;
}

int PBB_ReadPB(int storageIndex, PbItem* pItem) {
  if (pItem == nullptr || !holds(storageIndex) || g_buffer.Used[storageIndex] == 0) return 0;
  *pItem = g_buffer.Items[storageIndex];
  return 1;
}

int PBB_WritePB(const PbItem* pItem) {
  if (pItem == nullptr || !holds(pItem->storageIndex)) return 0;
  _PBB_UseEmptyIndex(pItem->storageIndex);
  g_buffer.Items[pItem->storageIndex] = *pItem;
  g_written_end = std::max(g_written_end, pItem->storageIndex + 1);
  return 1;
}

int PBB_DeletePB(int storageIndex) {
  if (!holds(storageIndex)) return 0;
  _PBB_SetEmptyIndex(storageIndex);
  std::memset(&g_buffer.Items[storageIndex], 0, sizeof(PbItem));
  return 1;
}

int PBB_GetFirstEmptyIndex(void) {
  const int last = std::min<int>(g_buffer.MaxIndex, PBB_CAPACITY - 1);
  for (int index = std::max<int>(g_buffer.MinIndex, 0); index <= last; ++index) {
    if (_PBB_GetIndexIsEmpty(index)) return index;
  }
  return -1;
}

void _PBB_UseEmptyIndex(int storageIndex) {
  set_used(storageIndex, 1);
}

void _PBB_SetEmptyIndex(int storageIndex) {
  set_used(storageIndex, 0);
}

int _PBB_GetIndexIsEmpty(int storageIndex) {
  return holds(storageIndex) && g_buffer.Used[storageIndex] == 0 ? 1 : 0;
}
