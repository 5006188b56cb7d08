// SPDX-License-Identifier: MIT
#pragma once

#include <cstddef>
#include <initializer_list>
#include <string_view>

// An input as a series of choices, one byte each.
class Choices {
 public:
  explicit Choices(std::string_view input) : fInput(input) {}

  bool IsEmpty() const { return fInput.empty(); }

  // A number below `count`. Past the end of the input every choice is 0.
  unsigned Below(std::size_t count) {
    if (fInput.empty()) return 0;
    const auto choice = static_cast<unsigned char>(fInput.front());
    fInput.remove_prefix(1);
    return choice % static_cast<unsigned>(count);
  }

  template <class T>
  T Of(std::initializer_list<T> values) {
    return values.begin()[Below(values.size())];
  }

 private:
  std::string_view fInput;
};
