// SPDX-License-Identifier: MIT
#include <algorithm>
#include <cstring>

#include "probe/Checks.h"
#include "probe/Services.h"

// Atoms and errors.

namespace KAPProbe {

namespace {

using Strings = KAPStringInterface;
using Errors = KAPErrorInterface;

const char* PointerOf(KAPStringAtom* atom) { return Call<Strings, "GetCString">(atom); }

// Makes and releases atoms, whose storage may be what others have left.
void MakeOthers(std::size_t length, int count = 5000) {
  for (int i = 0; i < count; ++i) {
    std::string text = std::to_string(i);
    text.resize(std::max(length, text.size()), '.');
    MakeAtom(text.c_str());
  }
}

void CheckAtomReferences() {
  const std::string text = "a counted atom of the probe";
  Call<Strings, "AddRef">(nullptr);
  Atom first = MakeAtom(text.c_str());
  Call<Strings, "AddRef">(first);
  Atom second(first.Get());
  const char* const pointer = PointerOf(second);
  first.Reset();
  MakeOthers(text.size());
  const Atom again = MakeAtom(text.c_str());
  const bool isAlive = PointerOf(again) == pointer && pointer == text;
  if (!isAlive) second.Detach();
  Expect(isAlive, "the atom is lost although a reference is left");
}

constexpr Check kAtoms[] = {
    {"atoms.text", "KAPStringInterface", "NewStringAtom", "The atom of `text`: one new reference.",
     [] {
       std::string all;
       for (int byte = 1; byte < 256; ++byte) all += static_cast<char>(byte);
       for (const std::string& text :
            {std::string(), std::string("a"), all, std::string(100'000, 'x')}) {
         Expect(TextOf(MakeAtom(text.c_str())) == text,
                "an atom of " + std::to_string(text.size()) + " bytes has another text");
       }
     }},
    {"atoms.interned", "KAPStringInterface", "GetCString", "Equal strings have the same pointer.",
     [] {
       std::vector<Atom> atoms;
       for (int i = 0; i < 5000; ++i) {
         atoms.push_back(MakeAtom(("probe " + std::to_string(i)).c_str()));
       }
       for (int i = 0; i < 5000; ++i) {
         const std::string text = "probe " + std::to_string(i);
         const Atom& first = atoms[static_cast<std::size_t>(i)];
         Expect(PointerOf(MakeAtom(text.c_str())) == PointerOf(first),
                "equal strings have different pointers");
         Expect(TextOf(first) == text, "one of 5000 atoms has another text");
       }
       Expect(PointerOf(atoms[0]) != PointerOf(atoms[1]), "different strings have one pointer");
     }},
    {"atoms.shared", "KAPStringInterface", "NewStringAtom", "Equal strings share one atom",
     [] {
       const std::string text = "an atom of the probe";
       const Atom first = MakeAtom(text.c_str());
       const Atom second = MakeAtom(std::string(text).c_str());
       Expect(first == second, "equal strings have different atoms");
       Expect(first != MakeAtom("another atom of the probe"), "different strings have one atom");
     }},
    {"atoms.lives", "KAPStringInterface", "GetCString",
     "The text, borrowed: it lives as long as the atom.",
     [] {
       const Atom atom = MakeAtom("a lasting atom of the probe");
       const char* const text = PointerOf(atom);
       MakeOthers(27);
       Expect(PointerOf(atom) == text && std::strcmp(text, "a lasting atom of the probe") == 0,
              "the text changes when other atoms come and go");
     }},
    {"atoms.null", "KAPStringInterface", "NewStringAtom", "Null: out of memory, or `text` is null.",
     [] { Expect(!Atom(Call<Strings, "NewStringAtom">(nullptr)), "null has an atom"); }},
    {"atoms.null-text", "KAPStringInterface", "GetCString", "Null for null.",
     [] { Expect(!Call<Strings, "GetCString">(nullptr), "a null atom has a text"); }},
    {"atoms.references", "KAPStringInterface", "AddRef", "Adds one reference; null is ignored.",
     &CheckAtomReferences},
    {"atoms.release", "KAPStringInterface", "DeleteStringAtom",
     "Releases one reference; null is ignored.",
     [] {
       Call<Strings, "DeleteStringAtom">(nullptr);
       std::string text(kMebibyte, 'x');
       int number = 0;
       CheckNothingStays([&] {
         text.replace(0, 3, std::to_string(100 + number++ % 900));
         MakeAtom(text.c_str());
       });
     }},
};

Error MakeError(const char* message, const char* component, long code, void* data = nullptr,
                KAPDeleteProc freeData = nullptr) {
  Error error(Call<Errors, "NewError">(message, component, code, data, freeData));
  Need<Errors, "NewError">(error, "returns null");
  return error;
}

void Count(void* count) { ++*static_cast<int*>(count); }

constexpr Check kErrors[] = {
    {"errors.message", "KAPErrorInterface", "GetErrorMessage",
     "The message: a new reference to the error's atom, or null when the error has none.",
     [] {
       const Error error = MakeError("a message", "Probe", 7);
       Expect(TextFrom<Errors, "GetErrorMessage">(error) == "a message",
              "the message is another one");
       const Error without = MakeError(nullptr, nullptr, 0);
       Expect(!Atom(Call<Errors, "GetErrorMessage">(without)),
              "an error without a message has one");
     }},
    {"errors.component", "KAPErrorInterface", "GetComponent",
     "The component: a new reference to the error's atom, or null when the error has none.",
     [] {
       const Error error = MakeError("a message", "Probe", 7);
       Expect(TextFrom<Errors, "GetComponent">(error) == "Probe", "the component is another one");
     }},
    {"errors.copies", "KAPErrorInterface", "NewError", "The host copies both strings (null: none)",
     [] {
       char message[] = "before";
       const Error error = MakeError(message, message, 7);
       std::memcpy(message, "after!", 6);
       Expect(TextFrom<Errors, "GetErrorMessage">(error) == "before" &&
                  TextFrom<Errors, "GetComponent">(error) == "before",
              "a string of the error changes with the caller's");
     }},
    {"errors.atoms", "KAPErrorInterface", "NewError",
     "the error keeps the atoms of its strings alive as long as itself.",
     [] {
       const std::string text = "a lasting message";
       const Error error = MakeError(text.c_str(), nullptr, 7);
       const char* const before = PointerOf(Atom(Call<Errors, "GetErrorMessage">(error)));
       MakeOthers(text.size());
       const char* const after = PointerOf(Atom(Call<Errors, "GetErrorMessage">(error)));
       Expect(after == before && before == text, "the message does not live as long as the error");
     }},
    {"errors.code", "KAPErrorInterface", "GetID", "The code; 0 for null.",
     [] {
       for (const long code : {0l, 7l, -1l, 1l << 40}) {
         Expect(Call<Errors, "GetID">(MakeError("a message", "Probe", code)) == code,
                "the code " + std::to_string(code) + " becomes another one");
       }
       Expect(Call<Errors, "GetID">(nullptr) == 0, "null has a code");
     }},
    {"errors.data", "KAPErrorInterface", "GetErrorInfo",
     "The client data, borrowed; null when the error has none.",
     [] {
       int data = 0;
       Expect(Call<Errors, "GetErrorInfo">(MakeError("m", "c", 1, &data)) == &data,
              "the client data is another one");
       Expect(!Call<Errors, "GetErrorInfo">(MakeError("m", "c", 1)), "client data out of nothing");
     }},
    {"errors.last-release", "KAPErrorInterface", "NewError",
     "The last release passes `clientData` to `freeClientData`, which may be null.",
     [] {
       int freed = 0;
       CheckLastRelease<Errors>(MakeError("m", "c", 1, &freed, &Count), freed,
                                "frees the client data");
       MakeError("m", "c", 1, &freed);
     }},
    {"errors.core", "KAPErrorInterface", "GetCoreError",
     "A core error of the host: 0 is the unknown error, 1 the memory error.",
     [] {
       const Error unknown(Call<Errors, "GetCoreError">(0));
       const Error memory(Call<Errors, "GetCoreError">(1));
       Expect(unknown && memory, "a core error is null");
       Expect(unknown != memory, "both core errors are the same");
     }},
    {"errors.core-lives", "KAPErrorInterface", "GetCoreError",
     "Core errors are never destroyed; AddRef and Release accept them and change nothing.",
     [] {
       KAPError* const error = Call<Errors, "GetCoreError">(1);
       Need<Errors, "GetCoreError">(error, "returns null");
       const long code = Call<Errors, "GetID">(error);
       for (int i = 0; i < 10; ++i) Call<Errors, "Release">(error);
       for (int i = 0; i < 3; ++i) Call<Errors, "AddRef">(error);
       Expect(Call<Errors, "GetCoreError">(1) == error && Call<Errors, "GetID">(error) == code,
              "a core error changes after releases");
     }},
    {"errors.references", "KAPErrorInterface", "AddRef", "Adds one reference; null is ignored.",
     [] {
       Call<Errors, "AddRef">(nullptr);
       int freed = 0;
       Error first = MakeError("m", "c", 1, &freed, &Count);
       Call<Errors, "AddRef">(first);
       Error second(first.Get());
       first.Reset();
       if (freed != 0) second.Detach();
       Expect(freed == 0, "the error is lost although a reference is left");
     }},
    {"errors.null", "KAPErrorInterface", "Release", "Releases one reference; null is ignored.",
     [] {
       Call<Errors, "Release">(nullptr);
       int freed = 0;
       MakeError("m", "c", 1, &freed, &Count).Reset();
       Expect(freed == 1, "a new error outlives one release");
     }},
};

}  // namespace

std::span<const Check> AtomChecks() { return kAtoms; }
std::span<const Check> ErrorChecks() { return kErrors; }

}  // namespace KAPProbe
