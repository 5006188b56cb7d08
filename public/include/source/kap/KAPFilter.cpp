// SPDX-License-Identifier: MIT
#include "kap/KAPFilter.h"

#include <utility>

#include "kap/KAPClientProcs.h"
#include "kap/KAPError.h"
#include "source/kap/KAPHandOver.h"

namespace KAP_T_MT {

// A filter that a client object returns crosses as a handle with one reference for the host.
template <>
struct TKAPClientResult<CKAPFilter> {
  using Place = KAPFilter*;
  static Place Cross(CKAPFilter filter) { return filter.Detach(); }
};

namespace {

using KAPFilterClient = TKAPInterfaceClient<KAPFilterInterface>;

constexpr KAPSinkWriteProc MySinkWrite = &TKAPClientProc<&KAPClientDataSink::Write>::Call;
constexpr KAPSinkDeleteProc MySinkDelete = &KAPDeleteClientProc;
constexpr KAPFilterCloseProc MyFilterClose = &TKAPClientProc<&KAPClientFilter::Close>::Call;
constexpr KAPFilterGetVellumcodeFilterProc MyFilterGetVellumcodeFilter =
    &TKAPClientProc<&KAPClientFilter::GetVellumcodeFilter>::Call;
constexpr KAPImageParmsProc MyImageParms =
    &TKAPClientProc<&KAPClientFilterJPEG::SetImageParameters>::Call;
constexpr KAPCompressionParmsProc MyCompressionParms =
    &TKAPClientProc<&KAPClientFilterJPEG::SetCompressionParameters>::Call;

template <TKAPName Method, class... Args>
KAPDataSink* NewSink(Args... args) {
  KAPDataSink* sink = nullptr;
  KAPCheck(KAPFilterClient::Call<Method>(&sink, args...));
  return sink;
}

// For owners, which must not be empty. Null and no error: the table cannot be loaded, or the host
// breaks its contract.
TKAPNewHandle<KAPDataSink> Required(KAPDataSink* sink) {
  if (!KAPMade<KAPFilterInterface>(sink)) CKAPError::ThrowError(kUnknownErrorID);
  return TKAPNewHandle(sink);
}

}  // namespace

CKAPDataSink CKAPDataSink::New() { return CKAPDataSink(Required(NewSink<"NewNullDataSink">())); }

CKAPDataSink::CKAPDataSink(TKAPClientObject<KAPClientDataSink> client)
    : TKAPReference(Required(_NewClientDataSink(std::move(client)))) {}

TKAPNewHandle<KAPDataSink> CKAPDataSink::_NewClientDataSink(
    TKAPClientObject<KAPClientDataSink> client) {
  return TKAPNewHandle(KAPHandOver<KAPFilterInterface>(std::move(client), [](void* object) {
    return NewSink<"NewClientDataSink">(object, MySinkWrite, MySinkDelete);
  }));
}

void CKAPDataSink::Write(const unsigned char* data, std::size_t size) {
  KAPCheck(KAPFilterClient::Call<"Write">(Handle(), data, size));
}

bool CKAPDataSink::IsFilter() const { return KAPFilterClient::Call<"IsFilter">(Handle()); }

CKAPFilter::CKAPFilter(const CKAPDataSink& target, TKAPClientObject<KAPClientFilter> client)
    : CKAPFilter(Required(_NewClientFilter(target, std::move(client)))) {}

TKAPNewHandle<KAPFilter> CKAPFilter::_NewClientFilter(const CKAPDataSink& target,
                                                      TKAPClientObject<KAPClientFilter> client) {
  return TKAPNewHandle(KAPHandOver<KAPFilterInterface>(std::move(client), [&](void* object) {
    return NewSink<"NewClientFilter">(target.Handle(), object, MySinkWrite, MySinkDelete,
                                      MyFilterClose, MyFilterGetVellumcodeFilter);
  }));
}

CKAPFilter CKAPFilter::NewIdentityFilter(const CKAPDataSink& target) {
  return CKAPFilter(Required(NewSink<"NewIdentityFilter">(target.Handle())));
}

void CKAPFilter::Close() { KAPCheck(KAPFilterClient::Call<"Close">(Handle())); }

CKAPFilter CKAPFilter::GetVellumcodeFilter() {
  return CKAPFilter(NewSink<"GetVellumcodeFilter">(Handle()), KAPAdopt());
}

void CKAPFilter::SetDataSink(const CKAPDataSink& target) {
  KAPCheck(KAPFilterClient::Call<"SetDataSink">(Handle(), target.Handle()));
}

CKAPDataSink CKAPFilter::PeekTarget() const {
  return CKAPDataSink(KAPFilterClient::Call<"PeekTarget">(Handle()));
}

unsigned long CKAPFilter::GetChainState() const {
  unsigned long state = 0;
  KAPCheck(KAPFilterClient::Call<"GetChainState">(&state, Handle()));
  return state;
}

void CKAPFilter::ResetChainState() { KAPCheck(KAPFilterClient::Call<"ResetChainState">(Handle())); }

CKAPFilterJPEG::CKAPFilterJPEG(const CKAPDataSink& target,
                               TKAPClientObject<KAPClientFilterJPEG> client)
    : CKAPFilter(Required(_NewFilterJPEG(target, std::move(client)))) {}

TKAPNewHandle<KAPFilter> CKAPFilterJPEG::_NewFilterJPEG(
    const CKAPDataSink& target, TKAPClientObject<KAPClientFilterJPEG> client) {
  return TKAPNewHandle(KAPHandOver<KAPFilterInterface>(std::move(client), [&](void* object) {
    return NewSink<"NewFilterJPEG">(target.Handle(), object, MySinkWrite, MySinkDelete,
                                    MyFilterClose, MyFilterGetVellumcodeFilter, MyImageParms,
                                    MyCompressionParms);
  }));
}

void CKAPFilterJPEG::SetImageParameters(int width, int height, int channels) {
  KAPCheck(KAPFilterClient::Call<"SetImageParameters">(Handle(), width, height, channels));
}

void CKAPFilterJPEG::SetCompressionParameters(float quality) {
  KAPCheck(KAPFilterClient::Call<"SetCompressionParameters">(Handle(), quality));
}

}  // namespace KAP_T_MT
