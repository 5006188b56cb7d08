// SPDX-License-Identifier: MIT
#include "KAP.h"
#include "POSDict.h"
#include "POSStreamer.h"
#include "dir/KAPUtilsDirInterfaces.h"
#include "kapcheck/Scenario.h"
#include "pos/POSInterfaceSets.h"

// The scenario of libKAPUtils.so: builds an object, writes it as a document and reads it again.
// The client runtime is bound for each run, so that it holds nothing between two of them.

using namespace KAP_T_MT;

namespace {

CPOSObject WrittenAndRead(const CPOSObject& object) {
  const CPOSStreamer streamer = CPOSStreamer::New();
  CKAPPositionableStream stream(CKAPStreamFactory::NewPositionableMemoryStream());
  streamer.Serialize(stream, object, nullptr);
  stream.Seek(0, kKAPSeekFromStart);
  return streamer.Deserialize(stream);
}

bool Use() {
  CPOSDict person(
      CPOSObject::CreateFromText("< name (Ada Lovelace) born [10 (December) 1815] >", nullptr));
  person.Put("count", CPOSNumber(3));
  const CPOSObject copy = WrittenAndRead(person);
  return copy.IsEqual(person) && CPOSDict(copy).DeepGetNumber("born[2]").Get() == 1815;
}

// Whether `use` returns true. Catches while the runtime is bound: an exception may own an error of
// the host, which could not be released later.
bool Succeeds(bool (*use)()) {
  try {
    return use();
  } catch (const std::exception&) {
    return false;
  }
}

}  // namespace

KAP_CHECK_EXPORT int KAPCheckScenario(KAPGetProcAddressProc getProcAddress) {
  try {
    const KAPClient client(getProcAddress);
    return Succeeds(&Use);
  } catch (const KAPBindingError&) {
    return 0;
  }
}

// Not the directories: random names must not delete files.
KAP_CHECK_DECLARE(POSInterfaceSet, POSStreamerInterfaceSet, POSValidatorInterfaceSet,
                  KAPUtilsTempFileStreamFactory)
