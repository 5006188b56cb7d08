// SPDX-License-Identifier: MIT
#include "probe/Services.h"

namespace KAPProbe {

namespace {

KAPGetProcAddressProc gGetProc = nullptr;

std::string MessageOf(KAPError* error) {
  const Atom message(Call<KAPErrorInterface, "GetErrorMessage">(error));
  return message ? TextOf(message) : "";
}

}  // namespace

void SetHost(KAPGetProcAddressProc getProcAddress) { gGetProc = getProcAddress; }

void* Find(const char* interfaceName, const char* methodName, const char* procName) {
  return gGetProc ? gGetProc(interfaceName, methodName, procName) : nullptr;
}

void* MustFind(const char* interfaceName, const char* methodName, const char* procName) {
  void* const proc = Find(interfaceName, methodName, procName);
  if (!proc) throw NotOffered(std::string(interfaceName) + ", " + methodName);
  return proc;
}

Atom MakeAtom(const char* text) {
  Atom atom(Call<KAPStringInterface, "NewStringAtom">(text));
  Expect(atom, std::string("NewStringAtom makes no atom of \"") + text + '"');
  return atom;
}

std::string TextOf(KAPStringAtom* atom) {
  const char* const text = Call<KAPStringInterface, "GetCString">(atom);
  Expect(text, "GetCString returns null for an atom");
  return text;
}

void MustSucceed(KAPError* error, const std::string& call) {
  if (!error) return;
  const Error owned(error);
  throw Broken(call + " returns the error \"" + MessageOf(error) + '"');
}

void MustFail(KAPError* error, const std::string& call) {
  const Error owned(error);
  Expect(owned, call + " returns no error");
}

}  // namespace KAPProbe
