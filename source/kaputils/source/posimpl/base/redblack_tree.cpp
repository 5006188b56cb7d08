// SPDX-License-Identifier: MIT
#include "posimpl/base/redblack_tree.h"

// The rules: the root is black, a red node has black children, and every path from a node down to
// an empty place has equally many black nodes. Empty places count as black. Repairs go bottom-up
// along the parents, each written once for both directions: `side` is one, `!side` the other.

namespace NPOSImpl {
namespace {

constexpr unsigned kLeft = 0;
constexpr unsigned kRight = 1;
constexpr auto kRed = redblack_node::Colour::kRed;
constexpr auto kBlack = redblack_node::Colour::kBlack;

bool IsRed(const redblack_node* node) noexcept { return node && node->fColour == kRed; }

unsigned SideOf(const redblack_node* node, const redblack_node* parent) noexcept {
  return parent->fChild[kRight] == node;
}

redblack_node* Leftmost(redblack_node* node) noexcept {
  while (node->fChild[kLeft]) node = node->fChild[kLeft];
  return node;
}

}  // namespace

redblack_node* redblack_root::First() const noexcept { return fRoot ? Leftmost(fRoot) : nullptr; }

redblack_node* redblack_root::Next(redblack_node* node) noexcept {
  if (node->fChild[kRight]) return Leftmost(node->fChild[kRight]);
  redblack_node* parent = node->fParent;
  while (parent && SideOf(node, parent) == kRight) {
    node = parent;
    parent = node->fParent;
  }
  return parent;
}

void redblack_root::Link(redblack_node* node, redblack_place place) noexcept {
  node->fChild[kLeft] = nullptr;
  node->fChild[kRight] = nullptr;
  node->fParent = place.parent;
  node->fColour = kRed;
  LinkAt(place) = node;
  RepairRedPair(node);
}

void redblack_root::Unlink(redblack_node* node) noexcept {
  redblack_node* right = node->fChild[kRight];
  if (node->fChild[kLeft] && right) {
    // The next node has no left child: it is easy to take out, and it fits in this one's place.
    redblack_node* next = Leftmost(right);
    Unlink(next);
    Replace(node, next);
    return;
  }
  redblack_node* child = right ? right : node->fChild[kLeft];
  const redblack_place place = PlaceOf(node);
  LinkAt(place) = child;
  if (child) {
    // An only child is red, and its parent black.
    child->fParent = place.parent;
    child->fColour = kBlack;
  } else if (node->fColour == kBlack) {
    RepairShortSide(place);
  }
}

void redblack_root::Replace(redblack_node* node, redblack_node* successor) noexcept {
  LinkAt(PlaceOf(node)) = successor;
  successor->fParent = node->fParent;
  successor->fColour = node->fColour;
  for (const unsigned side : {kLeft, kRight}) {
    redblack_node* child = node->fChild[side];
    successor->fChild[side] = child;
    if (child) child->fParent = successor;
  }
}

redblack_node* redblack_root::TakeFirst(redblack_node*& detached) noexcept {
  redblack_node* node = detached;
  if (!node) return nullptr;
  while (redblack_node* left = node->fChild[kLeft]) {
    node->fChild[kLeft] = left->fChild[kRight];
    left->fChild[kRight] = node;
    node = left;
  }
  detached = node->fChild[kRight];
  return node;
}

redblack_node*& redblack_root::LinkAt(redblack_place place) noexcept {
  return place.parent ? place.parent->fChild[place.side] : fRoot;
}

redblack_place redblack_root::PlaceOf(const redblack_node* node) const noexcept {
  redblack_node* parent = node->fParent;
  return {parent, parent ? SideOf(node, parent) : kLeft};
}

// `node` goes down to its `side`; its child on the other side takes its place.
void redblack_root::Rotate(redblack_node* node, unsigned side) noexcept {
  redblack_node* riser = node->fChild[!side];
  redblack_node* inner = riser->fChild[side];
  LinkAt(PlaceOf(node)) = riser;
  riser->fParent = node->fParent;
  riser->fChild[side] = node;
  node->fParent = riser;
  node->fChild[!side] = inner;
  if (inner) inner->fParent = node;
}

// `node` is red, and its parent may be red as well.
void redblack_root::RepairRedPair(redblack_node* node) noexcept {
  while (IsRed(node->fParent)) {
    redblack_node* parent = node->fParent;
    redblack_node* grandparent = parent->fParent;  // never null: the root is black
    const unsigned side = SideOf(parent, grandparent);
    redblack_node* uncle = grandparent->fChild[!side];
    grandparent->fColour = kRed;
    if (!IsRed(uncle)) {
      if (SideOf(node, parent) != side) {
        Rotate(parent, side);
        parent = node;
      }
      parent->fColour = kBlack;
      Rotate(grandparent, !side);
      return;
    }
    parent->fColour = kBlack;
    uncle->fColour = kBlack;
    node = grandparent;
  }
  fRoot->fColour = kBlack;
}

// Every path through `place` lacks one black node, and the node at `place` is black.
void redblack_root::RepairShortSide(redblack_place place) noexcept {
  while (redblack_node* parent = place.parent) {
    redblack_node* sibling =
        parent->fChild[!place.side];  // there is one, to hold the black nodes that are missing here
    if (sibling->fColour == kRed) {
      sibling->fColour = kBlack;
      parent->fColour = kRed;
      Rotate(parent, place.side);
      sibling = parent->fChild[!place.side];
    }
    if (IsRed(sibling->fChild[kLeft]) || IsRed(sibling->fChild[kRight])) {
      BorrowFromSibling(place);
      return;
    }
    sibling->fColour = kRed;
    if (parent->fColour == kRed) {
      parent->fColour = kBlack;
      return;
    }
    place = PlaceOf(parent);
  }
}

// Ends the repair of a short side whose sibling is black and has a red child: that child pays for
// the missing black node.
void redblack_root::BorrowFromSibling(redblack_place place) noexcept {
  redblack_node* parent = place.parent;
  redblack_node* sibling = parent->fChild[!place.side];
  redblack_node* outer = sibling->fChild[!place.side];
  if (!IsRed(outer)) {
    outer = sibling;
    sibling = sibling->fChild[place.side];
    Rotate(outer, !place.side);
  }
  sibling->fColour = parent->fColour;
  parent->fColour = kBlack;
  outer->fColour = kBlack;
  Rotate(parent, place.side);
}

}  // namespace NPOSImpl
