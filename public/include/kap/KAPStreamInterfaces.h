// SPDX-License-Identifier: MIT
#pragma once

#include <cstddef>

#include "kap/KAPInterface.h"

// Streams: the factory that makes them, and the methods of each kind of stream. Data stores and
// data-block streams lend text instead of copying it. See KAPHostInterfaces.h for the conventions,
// KAPStream.h and KAPDataStore.h for the classes.
//
// A stream is a container. Its methods are looked up through the container, so any component may
// provide streams. There are three kinds: simple (read, write), rewindable and positionable; each
// has the methods of the kinds before it as well. Positions and sizes are in bytes.

namespace [[gnu::visibility("hidden")]] KAP_T_MT {

// Where the offset of a seek counts from.
enum KAPSeekOrigin : int { kKAPSeekFromStart = 0, kKAPSeekFromPosition = 1, kKAPSeekFromEnd = 2 };

// The procedures that a component hands over with a stream object of its own, `client`. Each
// returns null or a new error reference; after an error a result place is 0 or null.
//
//   Read       0 bytes mean the end of the input.
//   Write      Writes all bytes, or fails.
//   Delete     The host reports an error that it returns: a release has no result.
//   Create...  Returns a new client object. The host makes a stream for it with the same
//              procedures, and passes it to Delete when it cannot.
//   Seek       `origin` is a KAPSeekOrigin.
using KAPClientReadProc = KAPError* (*)(std::size_t* outCount, void* client, unsigned char* buffer,
                                        std::size_t count);
using KAPClientWriteProc = KAPError* (*)(void* client, const unsigned char* buffer,
                                         std::size_t count);
using KAPClientDeleteProc = KAPError* (*)(void* client);
using KAPClientCreateStreamProc = KAPError* (*)(void** outClient, void* client);
using KAPClientRewindProc = KAPError* (*)(void* client);
using KAPClientMarkProc = KAPError* (*)(long* outPosition, void* client);
using KAPClientSeekProc = KAPError* (*)(void* client, long offset, int origin);

// Makes streams: each procedure returns one reference. The procedures for client streams take over
// `client` on success: the last release passes it to `deleteClient`. On an error the client stays
// the caller's.
struct KAPStreamFactoryInterface
    : TKAPInterface<
          "KAPStreamFactoryInterface",
          // An empty stream in memory, for reading and writing. [any thread]
          TKAPMethod<"NewPositionableMemoryStream", "KAPNewPositionableMemoryStreamProc",
                     KAPError*(KAPPositionableStream** out),
                     KAPMakes(KAPResource::kContainer, KAPFault::kStream)>,
          // A read-only stream over a copy of the bytes. [any thread]
          TKAPMethod<"NewPositionableBufferStream", "KAPNewPositionableBufferStreamProc",
                     KAPError*(KAPPositionableStream** out, const unsigned char* data,
                               std::size_t size),
                     KAPMakes(KAPResource::kContainer, KAPFault::kStream)>,
          // A stream over the file at `path`, opened with a mode of fopen. The last release closes
          // the file. [any thread]
          TKAPMethod<"NewPositionableFileStream", "KAPNewPositionableFileStreamProc",
                     KAPError*(KAPPositionableStream** out, const char* path, const char* mode),
                     KAPMakes(KAPResource::kContainer, KAPFault::kStream)>,
          // A simple stream that forwards to `client`. [any thread]
          TKAPMethod<"NewClientSimpleStream", "KAPNewClientSimpleStreamProc",
                     KAPError*(KAPSimpleStream** out, void* client, KAPClientReadProc read,
                               KAPClientWriteProc write, KAPClientDeleteProc deleteClient),
                     KAPMakes(KAPResource::kContainer, KAPFault::kStream)>,
          // A rewindable stream that forwards to `client`. [any thread]
          TKAPMethod<"NewClientRewindableStream", "KAPNewClientRewindableStreamProc",
                     KAPError*(KAPRewindableStream** out, void* client, KAPClientReadProc read,
                               KAPClientWriteProc write, KAPClientDeleteProc deleteClient,
                               KAPClientCreateStreamProc createIndependentlyRewindableStream,
                               KAPClientRewindProc rewind),
                     KAPMakes(KAPResource::kContainer, KAPFault::kStream)>,
          // A positionable stream that forwards to `client`. [any thread]
          TKAPMethod<"NewClientPositionableStream", "KAPNewClientPositionableStreamProc",
                     KAPError*(KAPPositionableStream** out, void* client, KAPClientReadProc read,
                               KAPClientWriteProc write, KAPClientDeleteProc deleteClient,
                               KAPClientCreateStreamProc createIndependentlyRewindableStream,
                               KAPClientRewindProc rewind,
                               KAPClientCreateStreamProc createIndependentlyPositionableStream,
                               KAPClientMarkProc mark, KAPClientSeekProc seek),
                     KAPMakes(KAPResource::kContainer, KAPFault::kStream)>> {};

// ---- The methods of a stream by kind, looked up through its container ----

// The methods of every stream.
struct KAPSimpleStreamInterface
    : TKAPInterface<"KAPSimpleStreamInterface",
                    // Reads up to `count` bytes at the position and moves the position past them.
                    // `*outCount`: how many; 0 at the end of the input. [exclusive]
                    TKAPMethod<"Read", "KAPSimpleStreamReadProc",
                               KAPError*(std::size_t* outCount, KAPSimpleStream* stream,
                                         unsigned char* buffer, std::size_t count),
                               KAPFails(KAPFault::kRead)>,
                    // Writes all `count` bytes at the position and moves the position past them,
                    // or returns an error. [exclusive]
                    TKAPMethod<"Write", "KAPSimpleStreamWriteProc",
                               KAPError*(KAPSimpleStream* stream, const unsigned char* buffer,
                                         std::size_t count),
                               KAPFails(KAPFault::kWrite)>> {};

// The methods of a stream that also moves to its start.
struct KAPRewindableStreamInterface
    : TKAPInterface<"KAPRewindableStreamInterface",
                    // A stream over the same data with a position of its own: one reference.
                    // [exclusive]
                    TKAPMethod<"CreateIndependentlyRewindableStream",
                               "KAPRewindableStreamCreateIndependentlyRewindableStreamProc",
                               KAPError*(KAPRewindableStream** out, KAPRewindableStream* stream),
                               KAPMakes(KAPResource::kContainer, KAPFault::kIndependentStream)>,
                    // Moves the position to the start. [exclusive]
                    TKAPMethod<"Rewind", "KAPRewindableStreamRewindProc",
                               KAPError*(KAPRewindableStream* stream), KAPFails(KAPFault::kSeek)>> {
};

// The methods of a stream that also moves anywhere.
struct KAPPositionableStreamInterface
    : TKAPInterface<
          "KAPPositionableStreamInterface",
          // A stream over the same data with a position of its own: one reference.
          // [exclusive]
          TKAPMethod<"CreateIndependentlyPositionableStream",
                     "KAPPositionableStreamCreateIndependentlyPositionableStreamProc",
                     KAPError*(KAPPositionableStream** out, KAPPositionableStream* stream),
                     KAPMakes(KAPResource::kContainer, KAPFault::kIndependentStream)>,
          // The position, in bytes from the start. [exclusive]
          TKAPMethod<"Mark", "KAPPositionableStreamMarkProc",
                     KAPError*(long* outPosition, KAPPositionableStream* stream),
                     KAPFails(KAPFault::kMark)>,
          // Moves the position; `origin` is a KAPSeekOrigin. [exclusive]
          TKAPMethod<"Seek", "KAPPositionableStreamSeekProc",
                     KAPError*(KAPPositionableStream* stream, long offset, int origin),
                     KAPFails(KAPFault::kSeek)>> {};

// ---- The methods of data stores and data-block streams, looked up in the same way ----
//
// A component that provides one registers the methods under an interface name of its own, not under
// the names below; KAPDataStore.h shows how and says why.

// The methods of a data store.
struct KAPDataStoreInterface
    : TKAPInterface<
          "KAPDataStoreInterface",
          // The text from `offset` (in bytes) on, as far as the store keeps it in one piece. The
          // caller calls the block's `release` once. [exclusive]
          TKAPMethod<"GetBlock", "KAPDataStoreGetBlockProcV2",
                     KAPError*(KAPDataBlock* out, KAPDataStore* store, std::size_t offset)>> {};

// The methods of a data store that knows its size.
struct KAPSizedDataStoreInterface
    : TKAPInterface<"KAPSizedDataStoreInterface",
                    // The size of the text in bytes. [exclusive]
                    TKAPMethod<"GetSize", "KAPSizedDataStoreGetSizeProc",
                               KAPError*(std::size_t* out, KAPDataStore* store)>> {};

// The methods of a sequence of blocks.
struct KAPDataBlockStreamInterface
    : TKAPInterface<"KAPDataBlockStreamInterface",
                    // The next block; one without text at the end. The caller calls the block's
                    // `release` once. [exclusive]
                    TKAPMethod<"GetNextBlock", "KAPDataBlockStreamGetNextBlockProc",
                               KAPError*(KAPDataBlock* out, KAPDataBlockStream* stream)>,
                    // Makes the first block the next one. [exclusive]
                    TKAPMethod<"Rewind", "KAPDataBlockStreamRewindProc",
                               KAPError*(KAPDataBlockStream* stream)>> {};

// The interfaces of streams, each with what the ones before it lack, and those of data stores.
using KAPStreamInterfaceSet =
    TKAPInterfaceSet<KAPSimpleStreamInterface, KAPRewindableStreamInterface,
                     KAPPositionableStreamInterface>;
using KAPDataStoreInterfaceSet = TKAPInterfaceSet<KAPDataStoreInterface, KAPSizedDataStoreInterface,
                                                  KAPDataBlockStreamInterface>;

}  // namespace KAP_T_MT
