// SPDX-License-Identifier: MIT
#include <cstdlib>
#include <cstring>

#include "probe/Checks.h"
#include "probe/Services.h"

// Shared buffers and the cache.

namespace KAPProbe {

namespace {

using Buffers = KAPSharedBuffInterface;
using Cache = KAPCacheInterface;

void Count(void* count) { ++*static_cast<int*>(count); }

Buffer MakeBuffer(std::size_t size, void* data = nullptr, KAPDeleteProc deleteData = nullptr) {
  Buffer buffer(Call<Buffers, "NewBuffer">(size, data, deleteData, nullptr, nullptr));
  Expect(buffer, "NewBuffer returns null");
  return buffer;
}

constexpr Check kBuffers[] = {
    {"buffers.zeroed", "KAPSharedBuffInterface", "NewBuffer",
     "`data` null: zeroed storage of the host.",
     [] {
       for (const std::size_t size : {1ul, 100ul, 100'000ul}) {
         const Buffer buffer = MakeBuffer(size);
         Expect(Call<Buffers, "GetSize">(buffer) == size, "the size is another one");
         const unsigned char* const bytes = Call<Buffers, "GetBuffer">(buffer);
         Expect(bytes, "GetBuffer returns null");
         for (std::size_t i = 0; i < size; ++i) Expect(bytes[i] == 0, "a byte is not zero");
         std::memset(Call<Buffers, "GetBuffer">(buffer), 0xA5, size);
       }
     }},
    {"buffers.data", "KAPSharedBuffInterface", "NewBuffer",
     "Otherwise the buffer takes over `data`, and the last release passes it to `deleteProc`, which"
     " may be null; so may `growProc` and its `clientData`.",
     [] {
       int deleted = 0;
       Buffer buffer = MakeBuffer(sizeof deleted, &deleted, &Count);
       Expect(Call<Buffers, "GetBuffer">(buffer) == reinterpret_cast<unsigned char*>(&deleted),
              "the buffer has other bytes");
       Call<Buffers, "AddRef">(buffer);
       Buffer second(buffer.Get());
       buffer.Reset();
       Expect(deleted == 0, "the data is deleted while a reference is left");
       second.Reset();
       Expect(deleted == 1,
              "the last release deletes the data " + std::to_string(deleted) + " times");
     }},
    {"buffers.owned", "KAPSharedBuffInterface", "DeleteUnowned",
     "Deletes a buffer that has no reference; otherwise does nothing.",
     [] {
       int deleted = 0;
       const Buffer buffer = MakeBuffer(sizeof deleted, &deleted, &Count);
       Call<Buffers, "DeleteUnowned">(buffer);
       Expect(deleted == 0, "a buffer with a reference is deleted");
     }},
    {"buffers.null", "KAPSharedBuffInterface", "GetBuffer",
     "The bytes, borrowed: they live as long as the buffer. Null for null.",
     [] {
       Expect(!Call<Buffers, "GetBuffer">(nullptr), "null has bytes");
       Expect(Call<Buffers, "GetSize">(nullptr) == 0, "null has a size");
       Call<Buffers, "AddRef">(nullptr);
       Call<Buffers, "Release">(nullptr);
     }},
};

// An item of the cache that counts its purges.
struct Item {
  int fPurged = 0;
  static void Purge(void* item) { ++static_cast<Item*>(item)->fPurged; }
};

CacheID MakeID() {
  CacheID id(Call<Cache, "NewCacheID">());
  Expect(id, "NewCacheID returns null");
  return id;
}

CacheID File(Item& item, std::size_t cost = 100) {
  CacheID id = MakeID();
  Expect(Call<Cache, "Add">(id, static_cast<void*>(&item), cost, &Item::Purge),
         "Add returns false");
  return id;
}

void* Attach(const CacheID& id) { return Call<Cache, "Attach">(id); }
void Unmark(const CacheID& id, Item& item) {
  Call<Cache, "MarkPurge">(id, static_cast<void*>(&item));
}

CacheSet MakeSet() {
  CacheSet set(Call<Cache, "NewCacheSet">());
  Expect(set, "NewCacheSet returns null");
  return set;
}
bool IsIn(const CacheSet& set, const CacheID& id) { return Call<Cache, "SearchForID">(set, id); }

int gClears = 0;
void Clear() { ++gClears; }

constexpr Check kCaches[] = {
    {"caches.attach", "KAPCacheInterface", "Attach",
     "The item, borrowed and marked: it is not purged before MarkPurge.",
     [] {
       Item item;
       const CacheID id = File(item);
       Expect(Attach(id) == &item, "Attach returns another item");
       Call<Cache, "PurgeAll">();
       Expect(item.fPurged == 0, "a marked item is purged");
       Unmark(id, item);
     }},
    {"caches.purge", "KAPCacheInterface", "PurgeAll", "Purges every item that is not marked.",
     [] {
       Item item, marked;
       const CacheID id = File(item), other = File(marked);
       Attach(other);
       Call<Cache, "PurgeAll">();
       Expect(item.fPurged == 1,
              "an item without marks is purged " + std::to_string(item.fPurged) + " times");
       Expect(marked.fPurged == 0, "a marked item is purged");
       Unmark(other, marked);
       Call<Cache, "PurgeAll">();
       Expect(marked.fPurged == 1, "an item is not purged after its last mark is removed");
     }},
    {"caches.purged", "KAPCacheInterface", "Attach", "Null when it was purged.",
     [] {
       Item item;
       const CacheID id = File(item);
       Call<Cache, "PurgeAll">();
       Expect(!Attach(id), "Attach returns an item that was purged");
     }},
    {"caches.last-release", "KAPCacheInterface", "Release", "The last release purges the item.",
     [] {
       Item item;
       CacheID id = File(item);
       Call<Cache, "AddRef">(id);
       CacheID second(id.Get());
       id.Reset();
       Expect(item.fPurged == 0, "the item is purged while a reference is left");
       second.Reset();
       Expect(item.fPurged == 1,
              "the last release purges the item " + std::to_string(item.fPurged) + " times");
     }},
    {"caches.add", "KAPCacheInterface", "Add",
     "False: the identity has an item or the host fails, and the item stays the caller's.",
     [] {
       Item item, other;
       {
         const CacheID id = File(item);
         Expect(!Call<Cache, "Add">(id, static_cast<void*>(&other), std::size_t{1}, &Item::Purge),
                "an identity takes a second item");
       }
       Expect(other.fPurged == 0, "an item that was not added is purged");
     }},
    {"caches.mark", "KAPCacheInterface", "MarkNoPurge",
     "Adds a mark; an item with marks is not purged.",
     [] {
       Item item;
       const CacheID id = File(item);
       const auto mark = [&] { return Call<Cache, "MarkNoPurge">(id, static_cast<void*>(&item)); };
       Expect(mark() && mark(), "MarkNoPurge returns false");
       Unmark(id, item);
       Call<Cache, "PurgeAll">();
       Expect(item.fPurged == 0, "an item with one of two marks left is purged");
       Unmark(id, item);
       Call<Cache, "PurgeAll">();
       Expect(item.fPurged == 1 && !mark(), "MarkNoPurge marks an item that was purged");
     }},
    {"caches.cost", "KAPCacheInterface", "UpdateCost",
     "Sets the cost in bytes; an item that was purged is ignored.",
     [] {
       Item item;
       const CacheID id = File(item, 100);
       const auto cost = [&] { return Call<Cache, "ReturnCost">(id, static_cast<void*>(&item)); };
       Expect(cost() == 100, "the cost is not what Add was given");
       const std::size_t before = Call<Cache, "CurrentCacheSize">();
       Call<Cache, "UpdateCost">(id, static_cast<void*>(&item), std::size_t{250});
       Expect(cost() == 250, "UpdateCost does not set the cost");
       Expect(Call<Cache, "CurrentCacheSize">() == before + 150,
              "the size of the cache does not follow the cost");
       Call<Cache, "PurgeAll">();
       Expect(cost() == 0, "an item that was purged has a cost");
     }},
    {"caches.size", "KAPCacheInterface", "CurrentCacheSize", "The cost of all items, in bytes.",
     [] {
       Item item;
       const std::size_t before = Call<Cache, "CurrentCacheSize">();
       CacheID id = File(item, 1000);
       Expect(Call<Cache, "CurrentCacheSize">() == before + 1000, "an item does not add its cost");
       id.Reset();
       Expect(Call<Cache, "CurrentCacheSize">() == before, "a purged item leaves its cost");
     }},
    {"caches.time", "KAPCacheInterface", "GetCacheTime",
     "A counter that grows with every use of the cache.",
     [] {
       Item item;
       const CacheID id = File(item);
       const unsigned long before = Call<Cache, "GetCacheTime">();
       Attach(id);
       Unmark(id, item);
       Expect(Call<Cache, "GetCacheTime">() > before, "the counter does not grow");
     }},
    {"caches.oldest", "KAPCacheInterface", "PurgeNextBlock", "Purges the item used longest ago.",
     [] {
       Call<Cache, "PurgeAll">();
       Item items[3];
       const CacheID ids[] = {File(items[0]), File(items[1]), File(items[2])};
       Attach(ids[0]);
       Unmark(ids[0], items[0]);
       const CachePurge purge(Call<Cache, "NewCachePurge">());
       Expect(purge, "NewCachePurge returns null");
       Expect(Call<Cache, "PurgeNextBlock">(purge), "PurgeNextBlock finds nothing");
       Expect(items[1].fPurged == 1 && items[0].fPurged + items[2].fPurged == 0,
              "another item is purged first");
     }},
    {"caches.purge-ends", "KAPCacheInterface", "PurgeNextBlock", "False: nothing is left to purge.",
     [] {
       Item item;
       const CacheID id = File(item);
       const CachePurge purge(Call<Cache, "NewCachePurge">());
       int steps = 0;
       while (Call<Cache, "PurgeNextBlock">(purge)) {
         Expect(++steps < 100'000, "the purge does not end");
       }
       Expect(item.fPurged == 1, "an item is left");
     }},
    {"caches.static", "KAPCacheInterface", "PurgeAllStaticCaches",
     "Calls every procedure registered with AddClientPurge, so that all components clear their"
     " static caches.",
     [] {
       gClears = 0;
       Call<Cache, "AddClientPurge">(&Clear, 1);
       Call<Cache, "PurgeAllStaticCaches">();
       const int cleared = gClears;
       Call<Cache, "RemoveClientPurge">(&Clear, 1);
       Expect(cleared == 1, "the procedure is called " + std::to_string(cleared) + " times");
       Call<Cache, "PurgeAllStaticCaches">();
       Expect(gClears == 1, "the procedure is called after RemoveClientPurge");
     }},
    {"caches.sets", "KAPCacheInterface", "SearchForID",
     "Deliberate: adds the identity if not, which is the only way to add one.",
     [] {
       const CacheSet set = MakeSet();
       const CacheID id = MakeID(), other = MakeID();
       Expect(!IsIn(set, id), "a new set contains an identity");
       Expect(IsIn(set, id), "a search does not add the identity");
       Expect(!IsIn(set, other), "a set contains another identity");
     }},
    {"caches.set-remove", "KAPCacheInterface", "RemoveID",
     "Removes the identity; one that is not in the set is ignored.",
     [] {
       const CacheSet set = MakeSet();
       const CacheID id = MakeID(), other = MakeID();
       IsIn(set, id);
       Call<Cache, "RemoveID">(set, other);
       Expect(IsIn(set, id), "RemoveID of another identity removes this one");
       Call<Cache, "RemoveID">(set, id);
       Expect(!IsIn(set, id), "RemoveID does not remove the identity");
     }},
    {"caches.set-clear", "KAPCacheInterface", "RemoveIDs", "Removes all identities.",
     [] {
       const CacheSet set = MakeSet();
       const CacheID ids[] = {MakeID(), MakeID()};
       for (const CacheID& id : ids) IsIn(set, id);
       Call<Cache, "RemoveIDs">(set);
       for (const CacheID& id : ids) Expect(!IsIn(set, id), "an identity is left");
     }},
};

}  // namespace

std::span<const Check> BufferChecks() { return kBuffers; }
std::span<const Check> CacheChecks() { return kCaches; }

}  // namespace KAPProbe
