// SPDX-License-Identifier: MIT

// An ordered map whose nodes are the entries themselves.
//
// An entry carries its links, so that its owner decides where it lives, the tree allocates nothing,
// and finding a place and filling it are two steps. There are two layers: `redblack_root` links
// and rebalances nodes without knowing their type and is compiled once; `redblack_tree<Entry>` adds
// the order and the ownership.

#pragma once

#include <concepts>
#include <memory>
#include <utility>

namespace NPOSImpl {

// The links of an entry, to derive from; they belong to the tree. An entry is in one tree at a time
// and does not move in memory.
struct redblack_node {
  enum class Colour : unsigned char { kRed, kBlack };

  redblack_node() noexcept = default;
  redblack_node(const redblack_node&) = delete;
  redblack_node& operator=(const redblack_node&) = delete;

  // Left, then right: a side computed from a comparison chooses the child without a branch, which
  // the processor could not predict on the way down.
  redblack_node* fChild[2] = {nullptr, nullptr};
  redblack_node* fParent = nullptr;
  Colour fColour = Colour::kRed;

 protected:
  ~redblack_node() = default;
};

// A place for one node: below `parent`, on its left (0) or right (1) side. A null parent means the
// root.
struct redblack_place {
  redblack_node* parent = nullptr;
  unsigned side = 0;
};

// The root of a tree of nodes in some order, which is the caller's business. Owns nothing; only
// relinks.
class redblack_root {
 public:
  redblack_node* Root() const noexcept { return fRoot; }
  redblack_node* First() const noexcept;

  // The node that follows in order, null after the last.
  static redblack_node* Next(redblack_node* node) noexcept;

  // Puts `node` at the free place and rebalances. What its links held before does not matter.
  void Link(redblack_node* node, redblack_place place) noexcept;

  // Takes `node` out and rebalances. Its links mean nothing from then on.
  void Unlink(redblack_node* node) noexcept;

  // `successor` takes over the colour, the parent and the children of `node`, which is out of the
  // tree afterwards.
  void Replace(redblack_node* node, redblack_node* successor) noexcept;

  // Empties the tree and returns the old root, for TakeFirst.
  redblack_node* Detach() noexcept { return std::exchange(fRoot, nullptr); }

  // Cuts the first node off a detached tree, whose root is updated; null when none is left. Takes
  // the whole tree apart in order, in linear time and without memory: it rotates to the right
  // instead of remembering the way back, and leaves parents and colours wrong.
  static redblack_node* TakeFirst(redblack_node*& detached) noexcept;

 private:
  redblack_node*& LinkAt(redblack_place place) noexcept;
  redblack_place PlaceOf(const redblack_node* node) const noexcept;
  void Rotate(redblack_node* node, unsigned side) noexcept;
  void RepairRedPair(redblack_node* node) noexcept;
  void RepairShortSide(redblack_place place) noexcept;
  void BorrowFromSibling(redblack_place place) noexcept;

  redblack_node* fRoot = nullptr;
};

// A map of entries in ascending key order, keys unique. `Entry` derives from redblack_node and has
//   const Key& GetKey() const noexcept;
//   static int Compare(const LookUpKey&, const Entry&) noexcept;
// which is negative, 0 or positive as the key comes before, at or after the entry; one Compare for
// its own key and one for each other type to look it up by. Fastest, measured, is a Compare that
// tests for equality first and then returns `a < b ? -1 : 1`: it compiles to no branch.
// Ownership: the tree owns its entries, which come and leave as unique_ptr. Pointers handed out are
//   borrowed and valid until the entry leaves the tree, which it has before it is deleted.
// Errors: none, nothing throws or allocates. Null is both "no such entry" and the end of the order.
// Threads: no lock. Any number may read a tree that nothing changes; a thread that changes it must
//   be alone.
template <class Entry>
class redblack_tree {
 public:
  using EntryPtr = std::unique_ptr<Entry>;

  // Where a key is, or else belongs. Good until the tree changes.
  struct Position {
    Entry* found;
    redblack_place place;  // where to insert, if nothing was found
  };

  redblack_tree() noexcept = default;
  redblack_tree(redblack_tree&& other) noexcept { swap(other); }
  redblack_tree& operator=(redblack_tree&& other) noexcept {
    redblack_tree(std::move(other)).swap(*this);
    return *this;
  }
  ~redblack_tree() { Clear(); }

  bool empty() const noexcept { return !fRoot.Root(); }
  void swap(redblack_tree& other) noexcept { std::swap(fRoot, other.fRoot); }
  friend void swap(redblack_tree& left, redblack_tree& right) noexcept { left.swap(right); }

  template <class Key>
  Entry* Find(const Key& key) noexcept {
    return Search(key).found;
  }
  template <class Key>
  const Entry* Find(const Key& key) const noexcept {
    return Search(key).found;
  }

  Entry* First() noexcept { return Typed(fRoot.First()); }
  const Entry* First() const noexcept { return Typed(fRoot.First()); }
  static Entry* Next(Entry* entry) noexcept { return Typed(redblack_root::Next(entry)); }
  static const Entry* Next(const Entry* entry) noexcept { return Next(const_cast<Entry*>(entry)); }

  // The first entry after the key, which need not be there; for a walk whose entry has left the
  // tree. Null when there is none.
  template <class Key>
  const Entry* FirstAfter(const Key& key) const noexcept {
    const Position position = Search(key);
    return position.found ? Next(position.found) : FirstAfter(position);
  }

  // The same with the key's own entry, when it is there.
  template <class Key>
  const Entry* FirstFrom(const Key& key) const noexcept {
    const Position position = Search(key);
    return position.found ? position.found : FirstAfter(position);
  }

  // With InsertAt: find or insert in one descent.
  template <class Key>
  Position FindPosition(const Key& key) noexcept {
    return Search(key);
  }

  // `position` must be that of the entry's key, with nothing found, and the tree unchanged since.
  Entry* InsertAt(const Position& position, EntryPtr entry) noexcept {
    fRoot.Link(entry.get(), position.place);
    return entry.release();
  }

  // For a tree that is filled in order: `last` is its last entry (null when it is empty), and
  // `entry` comes after it.
  Entry* InsertLast(Entry* last, EntryPtr entry) noexcept {
    fRoot.Link(entry.get(), {last, 1});
    return entry.release();
  }

  // Returns the entry of an equal key, whose place the new one has taken; null if the key is new.
  EntryPtr Insert(EntryPtr entry) noexcept {
    const Position position = FindPosition(entry->GetKey());
    if (!position.found) {
      InsertAt(position, std::move(entry));
    } else {
      fRoot.Replace(position.found, entry.release());
    }
    return EntryPtr(position.found);
  }

  // Returns the entry taken out, null when the key is absent.
  template <class Key>
  EntryPtr Remove(const Key& key) noexcept {
    Entry* entry = Search(key).found;
    if (entry) fRoot.Unlink(entry);
    return EntryPtr(entry);
  }

  // Deletes every entry, in key order. The tree is empty before the first destructor runs. Calls
  // `announce` with each entry just before its destructor runs.
  template <class Announce>
  void Clear(Announce announce) noexcept {
    while (redblack_node* rest = fRoot.Detach()) {
      while (Entry* entry = Typed(redblack_root::TakeFirst(rest))) {
        announce(std::as_const(*entry));
        EntryPtr{entry}.reset();
      }
    }
  }
  void Clear() noexcept {
    Clear([](const Entry&) {});
  }

 private:
  static Entry* Typed(redblack_node* node) noexcept {
    static_assert(std::derived_from<Entry, redblack_node>);
    return static_cast<Entry*>(node);
  }

  // The first entry after a place where nothing is.
  static const Entry* FirstAfter(const Position& position) noexcept {
    const Entry* parent = Typed(position.place.parent);
    return parent && position.place.side != 0 ? Next(parent) : parent;
  }

  // Both children are fetched while the keys are compared: either may be next, and in a tree larger
  // than the cache the wait for it is most of the work. Find pays nothing for `place`.
  template <class Key>
  Position Search(const Key& key) const noexcept {
    redblack_place place;
    redblack_node* node = fRoot.Root();
    while (node) {
      __builtin_prefetch(node->fChild[0]);
      __builtin_prefetch(node->fChild[1]);
      const int order = Entry::Compare(key, *Typed(node));
      if (order == 0) break;
      place = {node, order > 0};
      node = node->fChild[place.side];
    }
    return {Typed(node), place};
  }

  redblack_root fRoot;
};

}  // namespace NPOSImpl
