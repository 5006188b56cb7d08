#pragma once

#include "kap/KAPInterface.h"

// The interfaces of directories and temporary files, as they are registered with the binder.
//
// Conventions of every procedure: the result is null, or a new reference to an error; the result
// place is then null or 0. A result place that is null is an error, and nothing is done. Handles,
// atoms and texts passed in are borrowed for the call; a returned handle or atom carries one new
// reference for the caller. Null is an error unless a contract allows it. A directory cannot
// change, so any thread may use it.

namespace [[gnu::visibility("hidden")]] KAP_T_MT {

// A directory is a path, kept as it was given: it is not opened and need not exist until it is
// used. The full path of a file is the directory, a slash unless the directory ends in one, and the
// name as it stands: an absolute name is appended as well, and ".." leads out of the directory. A
// relative path counts from the process's working directory at the time of each use.
//
// A failing system call is an error of the component "KAPUtilsDir" with the errno as its code.
struct KAPUtilsDirInterface
    : TKAPInterface<
          "KAPUtilsDirInterface",
          // The directory for temporary files: the environment variable TMPDIR as it stands, even
          // empty; "/tmp" when it is not set. [any thread]
          TKAPMethod<"GetTempDir", "KAPUtilsDirGetTempDir", KAPError*(KAPUtilsDir** out)>,
          // The process's working directory. "KAPUtilsDirImpl::GetCurrent: Unknown error" when the
          // system fails or the path is longer than 1023 bytes. [any thread]
          TKAPMethod<"GetCurrent", "KAPUtilsDirGetCurrent", KAPError*(KAPUtilsDir** out)>,
          // The directory at `path`, which is not opened. [any thread]
          TKAPMethod<"NewKAPUtilsDir", "KAPUtilsDirNewKAPUtilsDir",
                     KAPError*(KAPUtilsDir** out, KAPStringAtom* path)>,
          // 1 for an entry of any kind, 0 for none. A link counts as what it leads to; a path that
          // cannot be examined counts as absent. [any thread]
          TKAPMethod<"FileExists", "KAPUtilsDirFileExists",
                     KAPError*(unsigned char* out, KAPUtilsDir* directory, KAPStringAtom* name)>,
          // Deletes a file or an empty folder; of a link the link itself. No host call that may fail
          // is involved. "KAPUtilsDirImpl::Delete: Unknown error". [any thread]
          TKAPMethod<"Delete", "KAPUtilsDirDelete",
                     KAPError*(KAPUtilsDir* directory, KAPStringAtom* name)>,
          // Renames `from` to `to`, both in the directory; an existing `to` is replaced.
          // "KAPUtilsDirImpl::Rename: Unknown error". [any thread]
          TKAPMethod<"Rename", "KAPUtilsDirRename",
                     KAPError*(KAPUtilsDir* directory, KAPStringAtom* from, KAPStringAtom* to)>,
          // The full path; the file need not exist. [any thread]
          TKAPMethod<"GetFilePathSpec", "KAPUtilsDirGetFilePathSpec",
                     KAPError*(KAPStringAtom** out, KAPUtilsDir* directory, KAPStringAtom* name)>,
          // Creates an empty file that only its owner may read and write, and returns its name: the
          // prefix, a point and six characters that make it unique, also among processes. The part
          // of the prefix up to its last slash is not part of the name. The file stays until it is
          // deleted; after an error there is none. `second` is ignored and may be null.
          // "KAPUtilsDirImpl::createNewFile: Unknown error".
          //
          // Deliberate: each call keeps a descriptor on the file open for the life of the process
          // (closed on exec). A process has a limited number of them, and the storage of a deleted
          // file is freed when the process ends. [any thread]
          TKAPMethod<"CreateUniqueFilename", "KAPUtilsDirCreateUniqueFilename",
                     KAPError*(KAPStringAtom** out, KAPUtilsDir* directory, KAPStringAtom* prefix,
                               KAPStringAtom* second)>> {};

struct KAPUtilsTempFileStreamFactory
    : TKAPInterface<
          "KAPUtilsTempFileStreamFactory",
          // A stream over a new file in the temporary directory, named as by "CreateUniqueFilename"
          // (whose note on descriptors applies). `prefix` has no slash; `second` is ignored and may
          // be null; `mode` is that of the host's file streams: "w+b" to write and read. When the
          // call fails, no file remains.
          //
          // The last release of the stream closes and deletes the file. The host reports a deletion
          // that fails. A stream that outlives the library's termination leaves its file.
          //
          // The streams that "CreateIndependentlyPositionableStream" makes are read-only views of
          // the same file, each with a position of its own. The first one turns the stream itself
          // into a view too, at position 0: what was written is then in the file, and nothing more
          // can be written, even when the view itself cannot be made. A view still reads after the
          // file has been deleted, but makes no further views. Several threads may make views at
          // the same time. [any thread]
          TKAPMethod<"NewTempFileStream", "_KAPUtilsNewTempFileStreamProc_NewTempFileStream",
                     KAPError*(KAPPositionableStream** out, const char* prefix, const char* second,
                               const char* mode)>> {};

}  // namespace KAP_T_MT
