#pragma once

#include "kap/KAPInterface.h"

namespace [[gnu::visibility("hidden")]] KAP_T_MT {

// What a component hands over together with a sink or filter object of its own, `client`. Each
// gives null or a new error reference.
using KAPSinkWriteProc = KAPError* (*)(void* client, const unsigned char* data, std::size_t count);
using KAPSinkDeleteProc = KAPError* (*)(void* client);
using KAPFilterCloseProc = KAPError* (*)(void* client);
using KAPFilterGetVellumcodeFilterProc = KAPError* (*)(KAPFilter** out, void* client);
using KAPImageParmsProc = KAPError* (*)(void* client, int width, int height, int channels);
using KAPCompressionParmsProc = KAPError* (*)(void* client, float quality);

// Sinks take bytes; a filter is a sink that hands what it makes of them to its target. The coder of
// the JPEG filter is the client's: the host forwards its parameters. Where making one fails, the
// client object stays the caller's. See KAPHostInterfaces.h for the conventions.
struct KAPFilterInterface
    : TKAPInterface<
          "KAPFilterInterface",
          TKAPMethod<"NewNullDataSink", "KAPFilterNewNullDataSinkV2Proc",
                     KAPError*(KAPDataSink** out)>,
          TKAPMethod<"NewClientDataSink", "KAPFilterNewClientDataSinkV2Proc",
                     KAPError*(KAPDataSink** out, void* client, KAPSinkWriteProc write,
                               KAPSinkDeleteProc deleteClient)>,
          TKAPMethod<"NewIdentityFilter", "KAPFilterNewIdentityFilterV2Proc",
                     KAPError*(KAPFilter** out, KAPDataSink* target)>,
          TKAPMethod<"NewClientFilter", "KAPFilterNewClientFilterV2Proc",
                     KAPError*(KAPFilter** out, KAPDataSink* target, void* client,
                               KAPSinkWriteProc write, KAPSinkDeleteProc deleteClient,
                               KAPFilterCloseProc close,
                               KAPFilterGetVellumcodeFilterProc getVellumcodeFilter)>,
          TKAPMethod<"NewFilterJPEG", "KAPFilterNewFilterJPEGV2Proc",
                     KAPError*(
                         KAPFilter** out, KAPDataSink* target, void* client, KAPSinkWriteProc write,
                         KAPSinkDeleteProc deleteClient, KAPFilterCloseProc close,
                         KAPFilterGetVellumcodeFilterProc getVellumcodeFilter,
                         KAPImageParmsProc imageParms, KAPCompressionParmsProc compressionParms)>,
          TKAPMethod<"AddRef", "KAPFilterAddRefV2Proc", void(KAPDataSink* sink)>,
          TKAPMethod<"Release", "KAPFilterReleaseProc", void(KAPDataSink* sink)>,
          TKAPMethod<"Write", "KAPFilterWriteV2Proc",
                     KAPError*(KAPDataSink* sink, const unsigned char* data, std::size_t count)>,
          TKAPMethod<"IsFilter", "KAPFilterIsFilterProc", bool(KAPDataSink* sink)>,
          TKAPMethod<"Close", "KAPFilterCloseProc", KAPError*(KAPFilter* filter)>,
          TKAPMethod<"GetVellumcodeFilter", "KAPFilterGetVellumcodeFilterProc",
                     KAPError*(KAPFilter** out, KAPFilter* filter)>,
          TKAPMethod<"SetDataSink", "KAPFilterSetDataSinkV2Proc",
                     KAPError*(KAPFilter* filter, KAPDataSink* target)>,
          TKAPMethod<"PeekTarget", "KAPFilterPeekTargetProc",
                     KAPDataSink*(KAPFilter* filter)>,  // borrowed
          TKAPMethod<"SetImageParameters", "KAPFilterJPEGSetImageParametersProc",
                     KAPError*(KAPFilter* filter, int width, int height, int channels)>,
          TKAPMethod<"SetCompressionParameters", "KAPFilterJPEGSetCompressionParametersProc",
                     KAPError*(KAPFilter* filter, float quality)>,
          TKAPMethod<"GetChainState", "KAPFilterGetChainStateV2Proc",
                     KAPError*(unsigned long* out, KAPFilter* filter)>,
          TKAPMethod<"ResetChainState", "KAPFilterResetChainStateProc",
                     KAPError*(KAPFilter* filter)>> {};

}  // namespace KAP_T_MT
