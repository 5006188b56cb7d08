// SPDX-License-Identifier: MIT
#include "probe/Checks.h"
#include "probe/Services.h"

// The cache. It may purge an item without a mark at any time, so items that must live are marked.
// Sizes and times are those of the whole process: no other component may use the cache meanwhile.

namespace KAPProbe {

namespace {

using Cache = KAPCacheInterface;

// An item of the cache that counts its purges.
struct Item {
  int fPurged = 0;
  static void Purge(void* item) { ++static_cast<Item*>(item)->fPurged; }
};

CacheID MakeID() {
  CacheID id(Call<Cache, "NewCacheID">());
  Need<Cache, "NewCacheID">(id, "returns null");
  return id;
}

bool Add(const CacheID& id, Item& item, std::size_t cost = 100) {
  return Call<Cache, "Add">(id, static_cast<void*>(&item), cost, &Item::Purge);
}
bool Mark(const CacheID& id, Item& item) {
  return Call<Cache, "MarkNoPurge">(id, static_cast<void*>(&item));
}
void Unmark(const CacheID& id, Item& item) {
  Call<Cache, "MarkPurge">(id, static_cast<void*>(&item));
}
std::size_t CostOf(const CacheID& id, Item& item) {
  return Call<Cache, "ReturnCost">(id, static_cast<void*>(&item));
}
std::size_t Size() { return Call<Cache, "CurrentCacheSize">(); }

// A new identity with the item, which is not marked.
CacheID File(Item& item, std::size_t cost = 100) {
  CacheID id = MakeID();
  Need<Cache, "Add">(Add(id, item, cost), "returns false");
  return id;
}

// The same, marked once.
CacheID FileMarked(Item& item, std::size_t cost = 100) {
  CacheID id = File(item, cost);
  void* const attached = Call<Cache, "Attach">(id);
  // The host may be quicker than the mark.
  if (!attached && item.fPurged != 0) throw NotOffered("a cache that keeps an item for a moment");
  Need<Cache, "Attach">(attached == &item, "returns another item");
  return id;
}

// Purges what the host may purge, by PurgeNextBlock.
void PurgeInSteps() {
  const CachePurge purge(Call<Cache, "NewCachePurge">());
  Need<Cache, "NewCachePurge">(purge, "returns null");
  int steps = 0;
  while (Call<Cache, "PurgeNextBlock">(purge)) {
    Need<Cache, "PurgeNextBlock">(++steps < 100'000, "never returns false");
  }
}

CacheSet MakeSet() {
  CacheSet set(Call<Cache, "NewCacheSet">());
  Need<Cache, "NewCacheSet">(set, "returns null");
  return set;
}
bool IsIn(const CacheSet& set, const CacheID& id) { return Call<Cache, "SearchForID">(set, id); }

int gClears = 0;
void Clear() { ++gClears; }

void CheckMarks(bool (*mark)(const CacheID&, Item&), void (*purge)()) {
  Item item;
  const CacheID id = FileMarked(item);
  Expect(mark(id, item), "a marked item cannot be marked again");
  purge();
  Unmark(id, item);
  purge();
  Expect(item.fPurged == 0, "an item with one of two marks left is purged");
  Unmark(id, item);
  purge();
  Expect(item.fPurged == 1,
         "an item without marks is purged " + std::to_string(item.fPurged) + " times");
}

bool Attach(const CacheID& id, Item& item) { return Call<Cache, "Attach">(id) == &item; }
void PurgeAll() { Call<Cache, "PurgeAll">(); }

void CheckAddingAgain() {
  Item item, other;
  const CacheID id = File(item);
  PurgeAll();
  Need<Cache, "PurgeAll">(item.fPurged == 1, "leaves an item without marks");
  Expect(Add(id, other), "an identity whose item was purged takes no other item");
  Call<Cache, "PurgeAll">();
  Expect(other.fPurged == 1 && item.fPurged == 1, "the second item is not purged once");
}

void CheckCost() {
  Item item;
  const CacheID id = FileMarked(item, 100);
  const std::size_t before = Size();
  Call<Cache, "UpdateCost">(id, static_cast<void*>(&item), std::size_t{250});
  Expect(CostOf(id, item) == 250, "UpdateCost does not set the cost");
  Expect(Size() == before + 150, "the size of the cache does not follow the cost");
  Unmark(id, item);
  PurgeAll();
  const std::size_t purged = Size();
  Expect(purged == before - 100, "a purge does not subtract the cost that was set");
  Call<Cache, "UpdateCost">(id, static_cast<void*>(&item), std::size_t{500});
  Expect(Size() == purged, "the cost of an item that was purged counts");
}

void CheckOldest() {
  PurgeAll();
  Item items[3];
  const CacheID ids[] = {FileMarked(items[0]), FileMarked(items[1]), FileMarked(items[2])};
  for (const int i : {1, 2, 0}) Unmark(ids[i], items[i]);
  const CachePurge purge(Call<Cache, "NewCachePurge">());
  Need<Cache, "NewCachePurge">(purge, "returns null");
  if (items[0].fPurged + items[1].fPurged + items[2].fPurged != 0) return;  // a quick host
  Expect(Call<Cache, "PurgeNextBlock">(purge), "PurgeNextBlock finds nothing");
  Expect(items[1].fPurged == 1 && items[0].fPurged + items[2].fPurged == 0,
         "another item is purged first");
}

void CheckPurgesOf(void (*purge)()) {
  Item item, marked;
  const CacheID id = File(item), other = FileMarked(marked);
  purge();
  Expect(item.fPurged == 1,
         "an item without marks is purged " + std::to_string(item.fPurged) + " times");
  Expect(marked.fPurged == 0, "a marked item is purged");
  Unmark(other, marked);
  purge();
  Expect(marked.fPurged == 1, "an item is not purged after its last mark is removed");
}

void CheckClientPurges() {
  gClears = 0;
  Call<Cache, "RemoveClientPurge">(&Clear, 1);
  Call<Cache, "AddClientPurge">(&Clear, 1);
  Call<Cache, "PurgeAllStaticCaches">();
  const int cleared = gClears;
  Call<Cache, "RemoveClientPurge">(&Clear, 1);
  Expect(cleared == 1, "the procedure is called " + std::to_string(cleared) + " times");
}

constexpr Check kChecks[] = {
    {"caches.identities", "KAPCacheInterface", "NewCacheID", "A new identity: one reference.",
     [] {
       const CacheID first = MakeID(), second = MakeID();
       Expect(first != second, "two identities are the same");
     }},
    {"caches.attach", "KAPCacheInterface", "Attach",
     "The item, borrowed and marked: it is not purged before MarkPurge.",
     [] { CheckMarks(&Attach, &PurgeAll); }},
    {"caches.purged", "KAPCacheInterface", "Attach", "Null when it was purged.",
     [] {
       Item item;
       const CacheID id = File(item);
       PurgeAll();
       Need<Cache, "PurgeAll">(item.fPurged == 1, "leaves an item without marks");
       Expect(!Call<Cache, "Attach">(id), "Attach returns an item that was purged");
       Expect(!Call<Cache, "Attach">(MakeID()), "a new identity has an item");
     }},
    {"caches.purge", "KAPCacheInterface", "PurgeAll", "Purges every item that is not marked.",
     [] { CheckPurgesOf(&PurgeAll); }},
    {"caches.purge-ends", "KAPCacheInterface", "PurgeNextBlock", "False: nothing is left to purge.",
     [] { CheckPurgesOf(&PurgeInSteps); }},
    {"caches.oldest", "KAPCacheInterface", "PurgeNextBlock", "Purges the item used longest ago.",
     &CheckOldest},
    {"caches.purge-begins", "KAPCacheInterface", "NewCachePurge",
     "Begins a purge; DeleteCachePurge ends it.",
     [] {
       const CachePurge first(Call<Cache, "NewCachePurge">()), next(Call<Cache, "NewCachePurge">());
       Expect(first && next, "NewCachePurge returns null");
     }},
    {"caches.purge-null", "KAPCacheInterface", "DeleteCachePurge", "Ends a purge; null is ignored.",
     [] { Call<Cache, "DeleteCachePurge">(nullptr); }},
    {"caches.references", "KAPCacheInterface", "AddRef", "Adds one reference; null is ignored.",
     [] {
       Call<Cache, "AddRef">(nullptr);
       Item item;
       CheckLastRelease<Cache>(FileMarked(item), item.fPurged, "purges the item");
     }},
    {"caches.last-release", "KAPCacheInterface", "Release",
     "null is ignored. The last release purges the item.",
     [] {
       Call<Cache, "Release">(nullptr);
       Item item;
       FileMarked(item).Reset();
       Expect(item.fPurged == 1,
              "the last release purges the item " + std::to_string(item.fPurged) + " times");
     }},
    {"caches.add", "KAPCacheInterface", "Add",
     "False: the identity has an item or the host fails, and the item stays the caller's.",
     [] {
       Item item, other;
       {
         const CacheID id = FileMarked(item);
         Expect(!Add(id, other), "an identity takes a second item");
       }
       Expect(other.fPurged == 0, "an item that was not added is purged");
     }},
    {"caches.add-again", "KAPCacheInterface", "Add", "Files an unmarked item", &CheckAddingAgain},
    {"caches.mark", "KAPCacheInterface", "MarkNoPurge",
     "Adds a mark; an item with marks is not purged.", [] { CheckMarks(&Mark, &PurgeAll); }},
    {"caches.mark-steps", "KAPCacheInterface", "MarkNoPurge",
     "Adds a mark; an item with marks is not purged.", [] { CheckMarks(&Mark, &PurgeInSteps); }},
    {"caches.mark-purged", "KAPCacheInterface", "MarkNoPurge", "False: the item was purged.",
     [] {
       Item item;
       const CacheID id = File(item);
       PurgeAll();
       Need<Cache, "PurgeAll">(item.fPurged == 1, "leaves an item without marks");
       Expect(!Mark(id, item), "MarkNoPurge marks an item that was purged");
     }},
    {"caches.unmark", "KAPCacheInterface", "MarkPurge", "Removes one mark.",
     [] { CheckMarks(&Attach, &PurgeInSteps); }},
    {"caches.cost", "KAPCacheInterface", "UpdateCost",
     "Sets the cost in bytes; an item that was purged is ignored.", &CheckCost},
    {"caches.return-cost", "KAPCacheInterface", "ReturnCost",
     "The cost in bytes; 0 for an item that was purged.",
     [] {
       Item item;
       const CacheID id = FileMarked(item, 100);
       Expect(CostOf(id, item) == 100, "the cost is not what Add was given");
       Unmark(id, item);
       PurgeAll();
       Need<Cache, "PurgeAll">(item.fPurged == 1, "leaves an item without marks");
       Expect(CostOf(id, item) == 0, "an item that was purged has a cost");
     }},
    {"caches.size", "KAPCacheInterface", "CurrentCacheSize", "The cost of all items, in bytes.",
     [] {
       PurgeAll();
       Item item;
       const std::size_t before = Size();
       CacheID id = FileMarked(item, 1000);
       Expect(Size() == before + 1000, "an item does not add its cost");
       id.Reset();
       Expect(Size() == before, "a purged item leaves its cost");
     }},
    {"caches.time", "KAPCacheInterface", "GetCacheTime",
     "A counter that grows with every use of the cache.",
     [] {
       Item item;
       const CacheID id = FileMarked(item);
       const unsigned long before = Call<Cache, "GetCacheTime">();
       Unmark(id, item);
       Expect(Call<Cache, "GetCacheTime">() > before, "the counter does not grow");
     }},
    {"caches.static", "KAPCacheInterface", "PurgeAllStaticCaches",
     "Calls every procedure registered with AddClientPurge", &CheckClientPurges},
    {"caches.static-added", "KAPCacheInterface", "AddClientPurge",
     "Registers the procedure that clears a component's static caches.", &CheckClientPurges},
    {"caches.static-removed", "KAPCacheInterface", "RemoveClientPurge",
     "Removes a procedure registered with AddClientPurge; ignores any other.",
     [] {
       CheckClientPurges();
       const int before = gClears;
       Call<Cache, "PurgeAllStaticCaches">();
       Expect(gClears == before, "the procedure is called after RemoveClientPurge");
     }},
    {"caches.new-set", "KAPCacheInterface", "NewCacheSet",
     "A new, empty set of identities: one reference.",
     [] {
       const CacheID id = MakeID();
       const CacheSet first = MakeSet(), second = MakeSet();
       Expect(!IsIn(first, id) && !IsIn(second, id), "a new set contains an identity");
     }},
    {"caches.sets", "KAPCacheInterface", "SearchForID", "Whether the set contains the identity.",
     [] {
       const CacheSet set = MakeSet();
       const CacheID id = MakeID(), other = MakeID();
       Expect(!IsIn(set, id), "a new set contains an identity");
       Expect(IsIn(set, id), "a search does not add the identity");
       Expect(!IsIn(set, other), "a set contains another identity");
     }},
    {"caches.set-references", "KAPCacheInterface", "AddRefCacheSet",
     "Adds one reference; null is ignored.",
     [] {
       Call<Cache, "AddRefCacheSet">(nullptr);
       CacheSet set = MakeSet();
       const CacheID id = MakeID();
       IsIn(set, id);
       Call<Cache, "AddRefCacheSet">(set);
       CacheSet second(set.Get());
       set.Reset();
       for (int i = 0; i < 100; ++i) IsIn(MakeSet(), MakeID());
       const bool isAlive = IsIn(second, id);
       if (!isAlive) second.Detach();
       Expect(isAlive, "the set is lost although a reference is left");
     }},
    {"caches.set-release", "KAPCacheInterface", "DeleteCacheSet",
     "Releases one reference; null is ignored.",
     [] {
       Call<Cache, "DeleteCacheSet">(nullptr);
       const CacheID id = MakeID();
       IsIn(MakeSet(), id);
       Expect(!IsIn(MakeSet(), id), "a new set contains what a set before it did");
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

std::span<const Check> CacheChecks() { return kChecks; }

}  // namespace KAPProbe
