// SPDX-License-Identifier: MIT

// The procedures of arrays, dictionaries and their iterators.

#include "kap/KAPBinder.h"
#include "kap/KAPBoundary.h"
#include "kap/KAPStringAtom.h"
#include "posimpl/base/SortableStringAtom.h"
#include "posimpl/notation/DeepPath.h"
#include "posimpl/objects/Array.h"
#include "posimpl/objects/Dict.h"
#include "posimpl/objects/DictIterator.h"
#include "posimpl/procs/POSDictImpl.h"

namespace NPOSObjectImpl {

using KAP_T_MT::CKAPStringAtom;
using KAP_T_MT::KAPReportingError;

namespace {

// ---- Arrays ----

POSArray* POSArrayNewPOSArrayProc() noexcept {
  return KAPReportingError([] { return Array::NewContainer(); });
}

bool POSArrayIsPOSArrayProc(POSObject* object) noexcept {
  return Array::GetInstanceNoThrow(object) != nullptr;
}

POSObject* POSArrayGetAtProc(POSArray* array, unsigned long index) noexcept {
  return KAPReportingError([=] { return Array::GetInstance(array).GetAt(index); });
}

unsigned int POSArrayCountProc(POSArray* array) noexcept {
  return KAPReportingError([=] { return Array::GetInstance(array).Count(); });
}

void POSArraySetAtProc(POSArray* array, unsigned long index, POSObject* object) noexcept {
  KAPReportingError([=] { Array::GetInstance(array).SetAt(index, BaseObject::Reference(object)); });
}

void POSArrayAppendProc(POSArray* array, POSObject* object) noexcept {
  KAPReportingError([=] { Array::GetInstance(array).Append(BaseObject::Reference(object)); });
}

void POSArrayRemoveProc(POSArray* array, unsigned long index) noexcept {
  KAPReportingError([=] { Array::GetInstance(array).Remove(index); });
}

// ---- Dictionaries ----

POSDict* POSDictNewPOSDictProc() noexcept {
  return KAPReportingError([] { return Dict::NewContainer(); });
}

bool POSDictIsPOSDictProc(POSObject* object) noexcept {
  return Dict::GetInstanceNoThrow(object) != nullptr;
}

POSObject* POSDictGetProc(POSDict* dict, KAPStringAtom* key) noexcept {
  return KAPReportingError([=] { return Dict::GetInstance(dict).Get(TextOf(key), true); });
}

// Any failure on the way, one of the host too, means that the path leads nowhere.
POSObject* POSDictDeepGetProc(POSDict* dict, KAPStringAtom* path) noexcept {
  return KAPReportingError(
      [=] { return DeepGet(Dict::GetInstance(dict), TextOf(path), true).Detach(); });
}

void POSDictPutProc(POSDict* dict, KAPStringAtom* key, POSObject* object) noexcept {
  KAPReportingError([=] {
    Dict::GetInstance(dict).Put(
        TextOf(key), [=] { return CKAPStringAtom(key); }, BaseObject::Reference(object));
  });
}

void POSDictRemoveProc(POSDict* dict, KAPStringAtom* key) noexcept {
  KAPReportingError([=] { Dict::GetInstance(dict).Remove(TextOf(key)); });
}

// ---- Iterators ----

POSDictIterator* POSDictIteratorNewPOSDictIteratorProc(POSDict* dict) noexcept {
  return KAPReportingError([=] { return DictIterator::NewContainer(Dict::GetInstance(dict)); });
}

void POSDictIteratorBeginProc(POSDictIterator* iterator) noexcept {
  KAPReportingError([=] { DictIterator::GetInstance(iterator).Begin(); });
}

void POSDictIteratorNextProc(POSDictIterator* iterator) noexcept {
  KAPReportingError([=] { DictIterator::GetInstance(iterator).Next(); });
}

// True also after a failure, so that a loop ends.
bool POSDictIteratorIsDoneProc(POSDictIterator* iterator) noexcept {
  return KAPReportingError([=] { return DictIterator::GetInstance(iterator).IsDone(); }, true);
}

const char* POSDictIteratorCurKeyProc(POSDictIterator* iterator) noexcept {
  return KAPReportingError([=] { return DictIterator::GetInstance(iterator).CurKey(); });
}

}  // namespace

template <>
bool RegisterProcs<KAP_T_MT::POSArrayInterface>() {
  return KAP_T_MT::KAPRegisterInterface<KAP_T_MT::POSArrayInterface>(
      &POSArrayNewPOSArrayProc, &POSArrayIsPOSArrayProc, &POSArrayGetAtProc, &POSArrayCountProc,
      &POSArraySetAtProc, &POSArrayAppendProc, &POSArrayRemoveProc);
}

template <>
bool RegisterProcs<KAP_T_MT::POSDictInterface>() {
  return KAP_T_MT::KAPRegisterInterface<KAP_T_MT::POSDictInterface>(
      &POSDictNewPOSDictProc, &POSDictIsPOSDictProc, &POSDictGetProc, &POSDictDeepGetProc,
      &POSDictPutProc, &POSDictRemoveProc);
}

template <>
bool RegisterProcs<KAP_T_MT::POSDictIteratorInterface>() {
  return KAP_T_MT::KAPRegisterInterface<KAP_T_MT::POSDictIteratorInterface>(
      &POSDictIteratorNewPOSDictIteratorProc, &POSDictIteratorBeginProc, &POSDictIteratorNextProc,
      &POSDictIteratorIsDoneProc, &POSDictIteratorCurKeyProc);
}

}  // namespace NPOSObjectImpl
