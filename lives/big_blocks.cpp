// Linked where the address sanitizer is. It maps a block of more than 128 KiB afresh and
// unmaps it again, which took half of the time of a story: each makes the log's queue of
// 3 MiB. Blocks of that size are kept here for the next one that wants the same; one that
// waits is poisoned, so that its use is still found.
#include <sanitizer/asan_interface.h>

#include <array>
#include <atomic>
#include <cstdlib>
#include <mutex>
#include <new>

namespace {

constexpr size_t kBig = size_t{1} << 20U;

struct Block {
  std::atomic<void*> at = nullptr;
  size_t size = 0;
};

std::mutex g_mutex;  // for all but a look whether a block is one of these
std::array<Block, 8> g_used;
std::array<Block, 4> g_kept;

template <class Blocks>
Block* Find(Blocks& blocks, const void* at, size_t size = 0) {
  for (Block& block : blocks) {
    if (block.at == at && (size == 0 || block.size == size)) return &block;
  }
  return nullptr;
}

void Move(Block& from, Block& to) {
  to.size = from.size;
  to.at = from.at.exchange(nullptr);
}

void* Take(size_t size) {
  const std::lock_guard lock(g_mutex);
  Block* const place = Find(g_used, nullptr);
  if (place == nullptr) return std::malloc(size);
  for (Block& block : g_kept) {
    if (block.at == nullptr || block.size != size) continue;
    Move(block, *place);
    ASAN_UNPOISON_MEMORY_REGION(place->at, size);
    return place->at;
  }
  place->size = size;
  return place->at = std::malloc(size);
}

bool Keep(void* at) {
  if (Find(g_used, at) == nullptr) return false;
  const std::lock_guard lock(g_mutex);
  Block* const used = Find(g_used, at);
  Block* const place = Find(g_kept, nullptr);
  if (place == nullptr) {
    used->at = nullptr;
    return false;
  }
  ASAN_POISON_MEMORY_REGION(at, used->size);
  Move(*used, *place);
  return true;
}

}  // namespace

void* operator new(size_t size, const std::nothrow_t&) noexcept {
  return size >= kBig ? Take(size) : std::malloc(size == 0 ? 1 : size);
}

void* operator new(size_t size) {
  if (void* const at = operator new(size, std::nothrow)) return at;
  throw std::bad_alloc();
}

void operator delete(void* at) noexcept {
  if (at != nullptr && !Keep(at)) std::free(at);
}

void operator delete(void* at, size_t /*size*/) noexcept { operator delete(at); }
void operator delete(void* at, const std::nothrow_t&) noexcept { operator delete(at); }
