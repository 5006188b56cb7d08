// SPDX-License-Identifier: MIT
#pragma once

#include <cstddef>

#include "kap/KAPInterface.h"

namespace [[gnu::visibility("hidden")]] KAP_T_MT {

// The procedures that a component hands over with a sink or filter object of its own, `client`.
// Each returns null or a new error reference.
using KAPSinkWriteProc = KAPError* (*)(void* client, const unsigned char* data, std::size_t count);
using KAPSinkDeleteProc = KAPError* (*)(void* client);
using KAPFilterCloseProc = KAPError* (*)(void* client);
using KAPFilterGetVellumcodeFilterProc = KAPError* (*)(KAPFilter** out, void* client);
using KAPImageParmsProc = KAPError* (*)(void* client, int width, int height, int channels);
using KAPCompressionParmsProc = KAPError* (*)(void* client, float quality);

// Sinks take bytes. A filter is a sink that transforms its bytes and writes the result to its
// target; a filter handle is valid wherever a sink handle is. A call on a sink that is not a filter
// of the required kind is an error. See KAPHostInterfaces.h for the conventions and KAPFilter.h for
// the classes.
//
// The `New...` procedures of client objects take over `client` on success: the last release passes
// it to `deleteClient`. On an error the client stays the caller's.
struct KAPFilterInterface
    : TKAPInterface<
          "KAPFilterInterface",
          // A sink that discards its bytes: one reference. [any thread]
          TKAPMethod<"NewNullDataSink", "KAPFilterNewNullDataSinkV2Proc",
                     KAPError*(KAPDataSink** out), KAPMakes(KAPResource::kSink, KAPFault::kSink)>,
          // A sink that forwards to `client`: one reference. [any thread]
          TKAPMethod<"NewClientDataSink", "KAPFilterNewClientDataSinkV2Proc",
                     KAPError*(KAPDataSink** out, void* client, KAPSinkWriteProc write,
                               KAPSinkDeleteProc deleteClient),
                     KAPMakes(KAPResource::kSink, KAPFault::kSink)>,
          // A filter that writes its bytes to `target` unchanged: one reference. The filter holds
          // a reference to the target. [any thread]
          TKAPMethod<"NewIdentityFilter", "KAPFilterNewIdentityFilterV2Proc",
                     KAPError*(KAPFilter** out, KAPDataSink* target),
                     KAPMakes(KAPResource::kSink, KAPFault::kSink)>,
          // A filter that forwards to `client`, which writes to the target itself: one reference.
          // The filter holds a reference to the target. [any thread]
          TKAPMethod<"NewClientFilter", "KAPFilterNewClientFilterV2Proc",
                     KAPError*(KAPFilter** out, KAPDataSink* target, void* client,
                               KAPSinkWriteProc write, KAPSinkDeleteProc deleteClient,
                               KAPFilterCloseProc close,
                               KAPFilterGetVellumcodeFilterProc getVellumcodeFilter),
                     KAPMakes(KAPResource::kSink, KAPFault::kSink)>,
          // As NewClientFilter, for a JPEG coder, which is the client's: the host only forwards
          // the parameters. One reference. [any thread]
          TKAPMethod<"NewFilterJPEG", "KAPFilterNewFilterJPEGV2Proc",
                     KAPError*(
                         KAPFilter** out, KAPDataSink* target, void* client, KAPSinkWriteProc write,
                         KAPSinkDeleteProc deleteClient, KAPFilterCloseProc close,
                         KAPFilterGetVellumcodeFilterProc getVellumcodeFilter,
                         KAPImageParmsProc imageParms, KAPCompressionParmsProc compressionParms),
                     KAPMakes(KAPResource::kSink, KAPFault::kSink)>,
          // Adds one reference; null is ignored. [any thread]
          TKAPMethod<"AddRef", "KAPFilterAddRefV2Proc", void(KAPDataSink* sink)>,
          // Releases one reference; null is ignored. [any thread]
          TKAPMethod<"Release", "KAPFilterReleaseProc", void(KAPDataSink* sink), kKAPReleases>,
          // Writes all `count` bytes, or returns an error, for a closed filter among others.
          // [exclusive]
          TKAPMethod<"Write", "KAPFilterWriteV2Proc",
                     KAPError*(KAPDataSink* sink, const unsigned char* data, std::size_t count)>,
          // Whether the sink is a filter; false for null. [any thread]
          TKAPMethod<"IsFilter", "KAPFilterIsFilterProc", bool(KAPDataSink* sink)>,
          // Ends the filter's output and closes the filter; for a closed filter does nothing. After
          // an error the filter is still open. [exclusive]
          TKAPMethod<"Close", "KAPFilterCloseProc", KAPError*(KAPFilter* filter)>,
          // The filter that reverses this one: one reference, or null and no error when there is
          // none. [exclusive]
          TKAPMethod<"GetVellumcodeFilter", "KAPFilterGetVellumcodeFilterProc",
                     KAPError*(KAPFilter** out, KAPFilter* filter)>,
          // Replaces the target; the filter holds a reference to the new one. An error when the
          // filter would lead to itself. [exclusive]
          TKAPMethod<"SetDataSink", "KAPFilterSetDataSinkV2Proc",
                     KAPError*(KAPFilter* filter, KAPDataSink* target)>,
          // The target, borrowed; null for a sink that is not a filter. [shared read]
          TKAPMethod<"PeekTarget", "KAPFilterPeekTargetProc", KAPDataSink*(KAPFilter* filter)>,
          // Forwards the image's size in pixels and its number of channels to a JPEG coder.
          // [exclusive]
          TKAPMethod<"SetImageParameters", "KAPFilterJPEGSetImageParametersProc",
                     KAPError*(KAPFilter* filter, int width, int height, int channels)>,
          // Forwards the quality to a JPEG coder, which defines its range. [exclusive]
          TKAPMethod<"SetCompressionParameters", "KAPFilterJPEGSetCompressionParametersProc",
                     KAPError*(KAPFilter* filter, float quality)>,
          // The number of closed filters in the chain: this one and those that follow it as
          // targets. [shared read]
          TKAPMethod<"GetChainState", "KAPFilterGetChainStateV2Proc",
                     KAPError*(unsigned long* out, KAPFilter* filter)>,
          // Opens all filters of the chain. [exclusive]
          TKAPMethod<"ResetChainState", "KAPFilterResetChainStateProc",
                     KAPError*(KAPFilter* filter)>> {};

}  // namespace KAP_T_MT
