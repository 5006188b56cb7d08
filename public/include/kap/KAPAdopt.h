// SPDX-License-Identifier: MIT
#pragma once

#include <cstddef>

// Whose reference a handle carries. A class that owns a reference takes a handle in these ways:
//
//   CKAPSimpleStream(handle)              // adds a reference; the caller keeps its own
//   CKAPSimpleStream(handle, KAPAdopt())  // takes over the caller's reference
//   CKAPSimpleStream(CKAPStreamFactory::NewPositionableMemoryStream())  // takes over the new one
//
// The third works without a tag because functions that make something return a TKAPNewHandle.
// Exceptions, each with a reason in its comment:
//   - CKAPError(handle) adopts; CKAPError(handle, KAPShare()) adds a reference.
//   - CKAPContainerHolder and CKAPStringAtom also take a `bool`, KAPContainerBaseGeneric an `int`,
//     where others take the tag: deprecated forms of the ways above.
//   - CKAPCachedContainerHolder points to a container and holds no reference. CKAPCachePurge owns a
//     purge, which has no references.
//   - CPOSNumber and the other kinds take a CPOSObject instead of a handle.

// Marks a deprecated declaration; `text` names the replacement. Warns only if KAP_WARN_DEPRECATED
// is defined, so that builds with warnings as errors keep working.
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

// A handle that carries one new reference for the caller, the result of functions that create an
// object. Pass it to an owner, which adopts it, or assign it to a plain handle, which you must then
// release:
//
//   *out = CKAPStreamFactory::NewPositionableMemoryStream();
//
// Ownership: none by itself: it does not release what is not taken over. It has a type of its own
//   and can be taken over only once, so that what would add a second reference does not compile.
//   Moving it costs nothing, and leaves the handle in place.
// Threads: a plain value.
template <class Object>
class [[nodiscard]] TKAPNewHandle {
 public:
  // For the maker: the handle carries a new reference.
  explicit constexpr TKAPNewHandle(Object* handle) noexcept : fHandle(handle) {}
  TKAPNewHandle(const TKAPNewHandle&) = delete;
  // Trivial, so that the handle crosses calls in a register.
  TKAPNewHandle(TKAPNewHandle&&) noexcept = default;
  TKAPNewHandle& operator=(const TKAPNewHandle&) = delete;
  TKAPNewHandle& operator=(TKAPNewHandle&&) noexcept = default;

  // The plain handle, with the reference. A handle with a name needs std::move.
  // NOLINTNEXTLINE(google-explicit-constructor): it stands wherever a plain handle does
  constexpr operator Object*() && noexcept { return fHandle; }
  // Testing it in a condition would leak the handle.
  operator bool() && = delete;      // NOLINT(google-explicit-constructor): never called
  operator bool() const& = delete;  // NOLINT(google-explicit-constructor): never called
  // Whether nothing was made.
  friend constexpr bool operator==(const TKAPNewHandle& made, std::nullptr_t) noexcept {
    return !made.fHandle;
  }

 private:
  Object* fHandle;
};

}  // namespace KAP_T_MT
