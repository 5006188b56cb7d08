// SPDX-License-Identifier: MIT
#pragma once

#include <cstdint>
#include <optional>

#include "posimpl/base/NestingGuard.h"
#include "posimpl/validator/Definition.h"
#include "posimpl/validator/ErrorList.h"
#include "posimpl/validator/Intrinsics.h"
#include "posimpl/validator/Outcomes.h"
#include "posimpl/validator/ProcEntry.h"
#include "posimpl/validator/Subject.h"

namespace NPOSValidatorImpl {

using ExtraValidations = NPOSImpl::redblack_tree<ProcEntry>;

// The check of one object against a schema, from part to part: what all its steps share. For the
// thread that makes it.
class TypeChecker {
 public:
  // With `mustKeep` callbacks may change the document and the schema during the check, see Kept.
  TypeChecker(const Dict& schema, const Keywords& words, const ExtraValidations& extraValidations,
              bool mustKeep) noexcept
      : fSchema(schema),
        fWords(words),
        fExtraValidations(extraValidations),
        fHasCallbacks(!extraValidations.empty()),
        fMustKeep(mustKeep) {}
  TypeChecker(const TypeChecker&) = delete;
  TypeChecker& operator=(const TypeChecker&) = delete;

  bool MustKeep() const noexcept { return fMustKeep; }
  const Keywords& Words() const noexcept { return fWords; }

  // The errors of an object held against a named type. Appends their messages.
  ErrorCount GetObjectErrors(AtomText typeName, const Subject& object, ErrorList& errors);

 private:
  // What the name of a type stands for.
  struct Type {
    Type() noexcept {}  // NOLINT(modernize-use-equals-default): nothing is initialised

    const Intrinsic* fIntrinsic;  // null: it has a definition
    union {
      Definition fDefinition;
    };
  };

  static std::size_t FirstPlace(AtomText typeName) noexcept {
    constexpr std::uint64_t kOdd = 0x9E3779B97F4A7C15;  // 2^64 divided by the golden ratio
    return reinterpret_cast<std::uintptr_t>(typeName) * kOdd >> (64 - kTypeBits);
  }
  // Null when the name was not met before, or no place was free.
  const Type* FindType(AtomText typeName) const noexcept;
  std::size_t FreePlaceFor(AtomText typeName) const noexcept;
  [[gnu::noinline]] ErrorCount GetErrorsOfNewType(AtomText typeName, const Subject& object,
                                                  ErrorList& errors);
  bool Find(AtomText typeName, Type& type, CPOSObject& kept) const;
  ErrorCount GetErrorsOf(const Type& type, AtomText typeName, const Subject& object,
                         ErrorList& errors);
  ErrorCount GetTypeDefinitionComplianceErrors(const Definition& definition, const Subject& object,
                                               ErrorList& errors);
  [[gnu::noinline]] bool BeginToRemember() noexcept;
  [[gnu::noinline]] ErrorCount GetRememberedErrors(AtomText typeName, const Definition& definition,
                                                   const Subject& object, ErrorList& errors);
  ErrorCount GetExtraValidationErrors(AtomText typeName, const Subject& object,
                                      ErrorList& errors) const;

  // A schema has few types, and most checks need fewer. What their names stand for is found once
  // for a check where nothing can change it. Searching the schema and each definition at each value
  // took a third of the time of a record. A name finds its place by its address; without a free
  // place near it, the type is looked up each time. A place is never given up, since checks refer
  // to it.
  static constexpr unsigned kTypeBits = 4;
  static constexpr std::size_t kTypes = std::size_t{1} << kTypeBits;
  static constexpr std::size_t kNear = 4;

  // Definitions within each other, and checks nested deeper than that, before outcomes are
  // remembered, which takes memory and time: few objects are nested so deep. Besides, the checks of
  // definitions before outcomes are remembered at any depth, for schemas that are wide instead.
  static constexpr unsigned kDepthUnremembered = 8;
  static constexpr std::uint64_t kChecksUnremembered = 1'000'000;  // some hundredths of a second
  static constexpr unsigned kDeepUnremembered = 1000;

  NPOSObjectImpl::NestingStack& fStack = NPOSObjectImpl::NestingStack::OnThisThread();
  const Dict& fSchema;
  const Keywords& fWords;
  const ExtraValidations& fExtraValidations;
  const bool fHasCallbacks;  // at the beginning; a callback may remove the last one
  const bool fMustKeep;
  unsigned fDepth = 0;
  unsigned fDeep = 0;
  std::uint64_t fChecks = 0;
  std::optional<Outcomes> fOutcomes;
  AtomText fTypeNames[kTypes] = {};
  Type fTypes[kTypes];  // those with a name
};

}  // namespace NPOSValidatorImpl
