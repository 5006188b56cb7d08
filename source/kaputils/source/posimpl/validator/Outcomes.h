// SPDX-License-Identifier: MIT
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>

#include "kap/KAPMemory.h"
#include "posimpl/validator/PropertyObjects.h"

namespace NPOSValidatorImpl {

// Which objects were found to be of which types, for a check that meets the same ones again and
// again. Each of n unions that tries two types which refer to the next union doubles the checks;
// what is remembered here makes their number grow like n. The same holds for intersections, for
// dictionaries with "valuetype" and "required", and for an object that is held in several places.
// Not for a check with callbacks, which would have to be called. Where messages are wanted, what is
// invalid is checked again for its messages, whose number doubles, until there are too many to read
// (see ErrorList::IsLong): 40 such unions would make 2^40.
//
// The table has a fixed size, and a later outcome may take the place of an earlier one: the memory
// is bounded, and the outcomes that are needed soonest are the latest ones. Where more objects
// than the table has places come between two checks of the same one, it is checked again.
class Outcomes {
 public:
  // What is reported is invalid, and its messages were made.
  enum class Known : unsigned char { kNothing, kValid, kInvalid, kReported };

  // Throws std::bad_alloc when the host has no memory.
  Outcomes() : fOutcomes(KAP_T_MT::KAPNewBlock<Outcome>(kPlaces)) {
    std::fill_n(fOutcomes.get(), kPlaces, Outcome());
  }

  Known Find(const POSObject* object, AtomText typeName) const noexcept {
    const Outcome& outcome = fOutcomes[Place(object, typeName)];
    const bool isSame = outcome.fObject == object && outcome.fTypeName == typeName;
    return isSame ? outcome.fKnown : Known::kNothing;
  }
  void Remember(const POSObject* object, AtomText typeName, Known known) noexcept {
    fOutcomes[Place(object, typeName)] = {object, typeName, known};
  }

 private:
  struct Outcome {
    const POSObject* fObject = nullptr;
    AtomText fTypeName = nullptr;
    Known fKnown = Known::kNothing;
  };
  static constexpr unsigned kBits = 12;
  static constexpr std::size_t kPlaces = std::size_t{1} << kBits;

  static std::size_t Place(const POSObject* object, AtomText typeName) noexcept {
    constexpr std::uint64_t kOdd = 0x9E3779B97F4A7C15;  // 2^64 divided by the golden ratio
    const std::uint64_t mixed = reinterpret_cast<std::uintptr_t>(object) * kOdd +
                                reinterpret_cast<std::uintptr_t>(typeName);
    return mixed * kOdd >> (64 - kBits);
  }

  KAP_T_MT::TKAPBlock<Outcome> fOutcomes;
};

}  // namespace NPOSValidatorImpl
