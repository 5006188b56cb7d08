// SPDX-License-Identifier: MIT
#include <array>
#include <cstring>

#include "probe/Checks.h"
#include "probe/Services.h"

// The binder, atoms, errors and memory.

namespace KAPProbe {

namespace {

using Binder = KAPBinderInterface;
using Strings = KAPStringInterface;
using Errors = KAPErrorInterface;
using Memory = KAPMemoryInterface;

constexpr char kInterface[] = "KAPProbeTrialInterface";

int First() { return 1; }
int Second() { return 2; }
void* Address(int (*proc)()) { return reinterpret_cast<void*>(proc); }

// Registers procedures for one check and unregisters them at its end.
class Registered {
 public:
  Registered(const char* method, void* proc) {
    Expect(Call<Binder, "KAPRegisterProcAddress">(kInterface, method, "P", proc) != 0,
           "KAPRegisterProcAddress returns 0");
  }
  Registered(const Registered&) = delete;
  Registered& operator=(const Registered&) = delete;
  ~Registered() {
    try {
      Call<Binder, "KAPUnregisterInterface">(kInterface);
    } catch (const NotOffered&) {  // another check says so
    }
  }
};

constexpr Check kBinder[] = {
    {"binder.register", "KAP", "KAPRegisterProcAddress",
     "Registers `proc` under the three names, replacing a procedure that is already there.",
     [] {
       const Registered first("M", Address(&First));
       Expect(Find(kInterface, "M", "P") == Address(&First),
              "a look-up does not find the procedure");
       Expect(!Find(kInterface, "M", "Q") && !Find(kInterface, "N", "P"),
              "a look-up finds it under other names");
       const Registered second("M", Address(&Second));
       Expect(Find(kInterface, "M", "P") == Address(&Second),
              "a look-up finds the procedure that was replaced");
     }},
    {"binder.names", "KAP", "KAPRegisterProcAddress", "The binder copies the names.",
     [] {
       char name[] = "M";
       const Registered registered(name, Address(&First));
       name[0] = 'N';
       Expect(Find(kInterface, "M", "P"), "a look-up finds nothing when the caller's name changes");
     }},
    {"binder.null", "KAP", "KAPRegisterProcAddress", "0: an argument is null, or the host fails.",
     [] {
       Expect(Call<Binder, "KAPRegisterProcAddress">(kInterface, "M", "P", nullptr) == 0,
              "a null procedure is registered");
       Expect(Call<Binder, "KAPRegisterProcAddress">(nullptr, "M", "P", Address(&First)) == 0,
              "a null name is registered");
     }},
    {"binder.unregister", "KAP", "KAPUnregisterInterface",
     "Removes every procedure of the interface.",
     [] {
       const Registered first("M", Address(&First));
       const Registered second("N", Address(&Second));
       Call<Binder, "KAPUnregisterInterface">(kInterface);
       Expect(!Find(kInterface, "M", "P") && !Find(kInterface, "N", "P"),
              "a look-up finds a procedure of an interface that was unregistered");
     }},
    {"binder.counter", "KAP", "KAPUnregisterInterface",
     "If there were any, the unregister counter grows by one and callers reload their tables before"
     " the next call.",
     [] {
       const volatile unsigned long* const counter = Call<Binder, "KAPGetUnregisterCountAddr">();
       Expect(counter != nullptr, "KAPGetUnregisterCountAddr returns null");
       unsigned long before = 0;
       {
         const Registered first("M", Address(&First));
         before = *counter;
       }
       Expect(*counter == before + 1, "the counter grows by " + std::to_string(*counter - before));
       Call<Binder, "KAPUnregisterInterface">(kInterface);
       Expect(*counter == before + 1, "the counter grows although no procedure was registered");
     }},
    {"binder.counter-address", "KAP", "KAPGetUnregisterCountAddr",
     "The address of the unregister counter, borrowed for the life of the process.",
     [] {
       Expect(Call<Binder, "KAPGetUnregisterCountAddr">() ==
                  Call<Binder, "KAPGetUnregisterCountAddr">(),
              "two calls return different addresses");
     }},
};

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
       const std::string text = "an atom of the probe";
       const Atom first = MakeAtom(text.c_str());
       const Atom second = MakeAtom(std::string(text).c_str());
       const Atom other = MakeAtom("another atom of the probe");
       Expect(Call<Strings, "GetCString">(first) == Call<Strings, "GetCString">(second),
              "equal strings have different pointers");
       Expect(first == second, "equal strings have different atoms");
       Expect(Call<Strings, "GetCString">(first) != Call<Strings, "GetCString">(other),
              "different strings have the same pointer");
     }},
    {"atoms.many", "KAPStringInterface", "GetCString", "Equal strings have the same pointer.",
     [] {
       std::vector<Atom> atoms;
       for (int i = 0; i < 5000; ++i)
         atoms.push_back(MakeAtom(("probe " + std::to_string(i)).c_str()));
       for (int i = 0; i < 5000; ++i) {
         const std::string text = "probe " + std::to_string(i);
         const Atom again = MakeAtom(text.c_str());
         Expect(again == atoms[static_cast<std::size_t>(i)] && TextOf(again) == text,
                "one of 5000 strings has another atom the second time");
       }
     }},
    {"atoms.null", "KAPStringInterface", "NewStringAtom", "Null: out of memory, or `text` is null.",
     [] { Expect(!Atom(Call<Strings, "NewStringAtom">(nullptr)), "null has an atom"); }},
    {"atoms.null-text", "KAPStringInterface", "GetCString", "Null for null.",
     [] { Expect(!Call<Strings, "GetCString">(nullptr), "a null atom has a text"); }},
    {"atoms.references", "KAPStringInterface", "AddRef", "Adds one reference; null is ignored.",
     [] {
       Call<Strings, "AddRef">(nullptr);
       Atom atom = MakeAtom("a counted atom of the probe");
       Call<Strings, "AddRef">(atom);
       const Atom second(atom.Get());
       atom.Reset();
       Expect(TextOf(second) == "a counted atom of the probe",
              "the atom is lost although a reference is left");
     }},
    {"atoms.release-null", "KAPStringInterface", "DeleteStringAtom",
     "Releases one reference; null is ignored.",
     [] { Call<Strings, "DeleteStringAtom">(nullptr); }},
};

Error MakeError(const char* message, const char* component, long code, void* data = nullptr,
                KAPDeleteProc freeData = nullptr) {
  Error error(Call<Errors, "NewError">(message, component, code, data, freeData));
  Expect(error, "NewError returns null");
  return error;
}

void Count(void* count) { ++*static_cast<int*>(count); }

constexpr Check kErrors[] = {
    {"errors.message", "KAPErrorInterface", "GetErrorMessage",
     "The message: a new reference to the error's atom, or null when the error has none.",
     [] {
       const Error error = MakeError("a message", "Probe", 7);
       Expect(TextOf(Atom(Call<Errors, "GetErrorMessage">(error))) == "a message",
              "the message is another one");
       const Error without = MakeError(nullptr, nullptr, 0);
       Expect(!Atom(Call<Errors, "GetErrorMessage">(without)),
              "an error without a message has one");
     }},
    {"errors.component", "KAPErrorInterface", "GetComponent",
     "The component: a new reference to the error's atom, or null when the error has none.",
     [] {
       const Error error = MakeError("a message", "Probe", 7);
       Expect(TextOf(Atom(Call<Errors, "GetComponent">(error))) == "Probe",
              "the component is another one");
     }},
    {"errors.copies", "KAPErrorInterface", "NewError",
     "The host copies both strings (null: none), and the error keeps the atoms of its strings alive"
     " as long as itself.",
     [] {
       char message[] = "before";
       const Error error = MakeError(message, message, 7);
       std::memcpy(message, "after!", 6);
       Expect(TextOf(Atom(Call<Errors, "GetErrorMessage">(error))) == "before" &&
                  TextOf(Atom(Call<Errors, "GetComponent">(error))) == "before",
              "a string of the error changes with the caller's");
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
       int released = 0;
       Error error = MakeError("m", "c", 1, &released, &Count);
       Call<Errors, "AddRef">(error);
       Error second(error.Get());
       error.Reset();
       Expect(released == 0, "the client data is freed while a reference is left");
       second.Reset();
       Expect(released == 1,
              "the last release frees the client data " + std::to_string(released) + " times");
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
       const std::string before = TextOf(Atom(Call<Errors, "GetErrorMessage">(error)));
       for (int i = 0; i < 10; ++i) Call<Errors, "Release">(error);
       Expect(Call<Errors, "GetCoreError">(1) == error &&
                  TextOf(Atom(Call<Errors, "GetErrorMessage">(error))) == before,
              "a core error changes after releases");
     }},
    {"errors.null", "KAPErrorInterface", "Release", "Releases one reference; null is ignored.",
     [] {
       Call<Errors, "Release">(nullptr);
       Call<Errors, "AddRef">(nullptr);
     }},
};

// A block of the host, filled with a byte.
class Block {
 public:
  Block(std::size_t size, int byte) : fSize(size), fByte(byte) {
    fBlock = Call<Memory, "Alloc">(size);
    Expect(fBlock, "Alloc returns null for " + std::to_string(size) + " bytes");
    std::memset(fBlock, byte, size);
  }
  Block(Block&& other) noexcept
      : fBlock(std::exchange(other.fBlock, nullptr)), fSize(other.fSize), fByte(other.fByte) {}
  ~Block() {
    if (fBlock) Call<Memory, "Free">(fBlock);
  }

  void* Get() const { return fBlock; }
  void Resize(std::size_t size) {
    void* const resized = Call<Memory, "Realloc">(fBlock, size);
    Expect(resized, "Realloc returns null for " + std::to_string(size) + " bytes");
    fBlock = resized;
  }
  // Whether the first bytes are those that it was filled with.
  bool Holds(std::size_t count) const {
    const auto* const bytes = static_cast<const unsigned char*>(fBlock);
    for (std::size_t i = 0; i < count; ++i) {
      if (bytes[i] != fByte) return false;
    }
    return true;
  }
  bool Holds() const { return Holds(fSize); }

 private:
  void* fBlock;
  std::size_t fSize;
  int fByte;
};

constexpr std::size_t kSizes[] = {1,   7,    8,    15,   16,   17,   63,     64,
                                  100, 1023, 1024, 1025, 4095, 4097, 65'537, 1'000'000};
// No machine has as much.
constexpr std::size_t kTooMuch = ~std::size_t{0} / 2;

constexpr Check kMemory[] = {
    {"memory.alignment", "KAPMemoryInterface", "Alloc",
     "A block of at least `size` bytes, 16-byte aligned, not initialised.",
     [] {
       for (const std::size_t size : kSizes) {
         const Block block(size, 0xA5);
         Expect(reinterpret_cast<std::size_t>(block.Get()) % 16 == 0,
                "a block of " + std::to_string(size) + " bytes is not 16-byte aligned");
       }
     }},
    {"memory.blocks", "KAPMemoryInterface", "Alloc",
     "A block of at least `size` bytes, 16-byte aligned, not initialised.",
     [] {
       std::vector<Block> blocks;
       for (int i = 0; i < 200; ++i) {
         blocks.emplace_back(kSizes[static_cast<std::size_t>(i) % std::size(kSizes)], i);
       }
       for (const Block& block : blocks) Expect(block.Holds(), "two live blocks overlap");
     }},
    {"memory.too-large", "KAPMemoryInterface", "Alloc", "Null: out of memory.",
     [] { Expect(!Call<Memory, "Alloc">(kTooMuch), "Alloc returns a block of 8 EiB"); }},
    {"memory.size", "KAPMemoryInterface", "GetBlockSize",
     "The usable size in bytes, at least the size that was requested.",
     [] {
       for (const std::size_t size : kSizes) {
         const Block block(size, 0);
         const std::size_t usable = Call<Memory, "GetBlockSize">(block.Get());
         Expect(usable >= size, "a block of " + std::to_string(size) + " bytes has a size of " +
                                    std::to_string(usable));
       }
     }},
    {"memory.resize", "KAPMemoryInterface", "Realloc",
     "Resizes `block`, which may move, and keeps the bytes that fit; with a null block as Alloc.",
     [] {
       for (const std::size_t size : kSizes) {
         Block block(size, 0x5A);
         block.Resize(size * 3);
         Expect(block.Holds(size), "a grown block has other bytes");
         Expect(Call<Memory, "GetBlockSize">(block.Get()) >= size * 3,
                "a grown block is too small");
         block.Resize(size / 2 + 1);
         Expect(block.Holds(size / 2 + 1), "a shrunk block has other bytes");
       }
       void* const block = Call<Memory, "Realloc">(nullptr, std::size_t{100});
       Expect(block, "Realloc of null returns null");
       Call<Memory, "Free">(block);
     }},
    {"memory.resize-fails", "KAPMemoryInterface", "Realloc",
     "Null: out of memory, and the block is unchanged.",
     [] {
       const Block block(100, 0x5A);
       Expect(!Call<Memory, "Realloc">(block.Get(), kTooMuch), "Realloc returns a block of 8 EiB");
       Expect(block.Holds(), "the block has other bytes");
     }},
    {"memory.free-null", "KAPMemoryInterface", "Free",
     "Frees a block of this interface; null is ignored.", [] { Call<Memory, "Free">(nullptr); }},
};

}  // namespace

std::span<const Check> BinderChecks() { return kBinder; }
std::span<const Check> AtomChecks() { return kAtoms; }
std::span<const Check> ErrorChecks() { return kErrors; }
std::span<const Check> MemoryChecks() { return kMemory; }

}  // namespace KAPProbe
