// SPDX-License-Identifier: MIT
#pragma once

// Whose reference a handle carries. Every class that owns a reference takes a handle in these ways,
// and in no other:
//
//   CKAPSimpleStream(handle)              // adds a reference; the caller keeps its own
//   CKAPSimpleStream(handle, KAPAdopt())  // takes over the caller's reference
//   CKAPSimpleStream(CKAPStreamFactory::NewPositionableMemoryStream())  // takes over the new one
//
// The third works without a tag because functions that make something return a TKAPNewHandle.
// Deliberate exceptions: CKAPError(handle) adopts, and a few constructors take a `bool` or an `int`
// instead of the tag. Their comments say so, and each has a counterpart in the ways above.

// Marks what has a better way, which `text` names. Quiet unless KAP_WARN_DEPRECATED is defined: the
// old ways keep working, and no build with warnings as errors stops because of them.
#ifdef KAP_WARN_DEPRECATED
#define KAP_DEPRECATED(text) [[deprecated(text)]]
#else
#define KAP_DEPRECATED(text)
#endif

namespace [[gnu::visibility("hidden")]] KAP_T_MT {

// Marks a constructor that takes over the caller's reference instead of adding one.
struct KAPAdopt {};

// Marks a constructor that adds a reference, where the constructor without a tag does not.
struct KAPShare {};

// A handle that carries one new reference for the caller: what a function returns that makes
// something. Give it to an owner, which adopts it, or convert it to a plain handle.
// Ownership: none by itself. It is a plain value with a type of its own, so that forgetting
//   KAPAdopt cannot leak; dropping it, or adding a reference to its plain handle, still does.
// Threads: a plain value.
template <class Object>
class [[nodiscard]] TKAPNewHandle {
 public:
  explicit constexpr TKAPNewHandle(Object* handle) noexcept : fHandle(handle) {}
  // NOLINTNEXTLINE(google-explicit-constructor): it stands wherever a plain handle does
  constexpr operator Object*() const noexcept { return fHandle; }

 private:
  Object* fHandle;
};

}  // namespace KAP_T_MT
