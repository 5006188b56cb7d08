// SPDX-License-Identifier: MIT
#include "Tables.h"

#include <fstream>
#include <map>
#include <type_traits>
#include <utility>

#include "KAPUtilsC.h"
#include "dir/KAPUtilsDirInterfaces.h"
#include "kap/KAPHostInterfaces.h"
#include "pos/POSInterfaceSets.h"

namespace {

template <class T, class... Known>
constexpr bool kIsOneOf = (std::is_same_v<T, Known> || ...);

template <class T>
std::string PlainName() {
  static_assert(
      kIsOneOf<T, void, bool, char, unsigned char, unsigned short, int, unsigned int, long,
               unsigned long, float, double, KAPDataBlock, KAPStringAtom, KAPError, KAPContainer,
               KAPSharedBuffer, KAPCacheID, KAPCacheSet, KAPCachePurge, KAPDataSink, KAPProgress>);
  if constexpr (std::is_void_v<T>) return "void";
  if constexpr (std::is_same_v<T, bool>) return "bool";
  if constexpr (std::is_same_v<T, char>) return "char";
  if constexpr (std::is_same_v<T, unsigned char>) return "unsigned char";
  if constexpr (std::is_same_v<T, unsigned short>) return "unsigned short";
  if constexpr (std::is_same_v<T, int>) return "int";
  if constexpr (std::is_same_v<T, unsigned int>) return "unsigned int";
  if constexpr (std::is_same_v<T, long>) return "long";
  if constexpr (std::is_same_v<T, unsigned long>) return "unsigned long";
  if constexpr (std::is_same_v<T, float>) return "float";
  if constexpr (std::is_same_v<T, double>) return "double";
  if constexpr (std::is_same_v<T, KAPDataBlock>) return "KAPDataBlock";
  if constexpr (std::is_same_v<T, KAPStringAtom>) return "KAPStringAtom";
  if constexpr (std::is_same_v<T, KAPError>) return "KAPError";
  if constexpr (std::is_same_v<T, KAPContainer>) return "KAPContainer";
  if constexpr (std::is_same_v<T, KAPSharedBuffer>) return "KAPSharedBuffer";
  if constexpr (std::is_same_v<T, KAPCacheID>) return "KAPCacheID";
  if constexpr (std::is_same_v<T, KAPCacheSet>) return "KAPCacheSet";
  if constexpr (std::is_same_v<T, KAPCachePurge>) return "KAPCachePurge";
  if constexpr (std::is_same_v<T, KAPDataSink>) return "KAPDataSink";
  if constexpr (std::is_same_v<T, KAPProgress>) return "KAPProgress";
  return "";
}

template <class T>
std::string TypeText();

template <class Result, class... Args>
std::string FunctionText(Result (*)(Args...), const char* name) {
  std::string text;
  ((text += (text.empty() ? "" : ", ") + TypeText<Args>()), ...);
  return TypeText<Result>() + name + "(" + text + ")";
}

template <class T>
std::string TypeText() {
  if constexpr (std::is_function_v<std::remove_pointer_t<T>>) {
    return FunctionText(T(), "(*)");
  } else if constexpr (std::is_pointer_v<T>) {
    return TypeText<std::remove_pointer_t<T>>() + "*";
  } else if constexpr (std::is_const_v<T>) {
    return "const " + TypeText<std::remove_const_t<T>>();
  } else {
    return PlainName<T>();
  }
}

template <class Interface, std::size_t... kSlots>
void Append(std::vector<std::string>& lines, std::index_sequence<kSlots...>) {
  const auto line = [](std::size_t slot, const std::string& signature) {
    const auto& entry = Interface::kEntries[slot];
    return std::string(Interface::kName) + " " + std::to_string(slot) + " " + entry.fMethodName +
           " " + entry.fProcName + " " + signature;
  };
  (lines.push_back(line(kSlots, FunctionText(typename Interface::template ProcAt<kSlots>(), ""))),
   ...);
}

// "KAPStringInterface 0", and what follows.
std::pair<std::string, std::string> Split(const std::string& line) {
  const std::size_t space = line.find(' ', line.find(' ') + 1);
  return {line.substr(0, space), line.substr(space + 1)};
}

}  // namespace

std::vector<std::string> DeclaredTables() {
  std::vector<std::string> lines;
  // The C header lists every interface there is.
#define KAP_APPEND(Interface) \
  Append<KAP_T_MT::Interface>(lines, std::make_index_sequence<KAP_T_MT::Interface::kCount>());
  KAPUTILS_INTERFACES(KAP_APPEND)
#undef KAP_APPEND
  return lines;
}

std::vector<std::string> BrokenPromises(const std::vector<std::string>& published,
                                        const std::vector<std::string>& declared) {
  std::map<std::string, std::string> now;
  for (const std::string& line : declared) now.insert(Split(line));
  std::vector<std::string> broken;
  for (const std::string& line : published) {
    const auto [slot, was] = Split(line);
    const auto found = now.find(slot);
    if (found == now.end()) {
      broken.push_back(slot + " is gone: " + was);
    } else if (found->second != was) {
      broken.push_back(slot + " was " + was + ", is " + found->second);
    }
  }
  return broken;
}

std::vector<std::string> ReadLines(const std::string& path) {
  std::ifstream file(path);
  std::vector<std::string> lines;
  for (std::string line; std::getline(file, line);) lines.push_back(line);
  return lines;
}

std::vector<std::string> AddToPublished(const std::string& path,
                                        const std::vector<std::string>& declared) {
  const std::vector<std::string> published = ReadLines(path);
  if (published.empty()) return {path + ": no published tables"};
  std::vector<std::string> broken = BrokenPromises(published, declared);
  if (!broken.empty()) return broken;
  std::ofstream file(path);
  for (const std::string& line : declared) file << line << '\n';  // the published ones among them
  if (!file.flush()) return {path + ": cannot be written"};
  return {};
}
