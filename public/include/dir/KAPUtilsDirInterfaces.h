#pragma once

#include "kap/KAPInterface.h"

// The interfaces of directories and temporary files, as they are registered with the binder.
//
// Conventions of every procedure: the result is null, or a new reference to an error; the result
// place is then null or 0. A result place that is null is an error, and nothing is done. Handles,
// atoms and texts passed in are borrowed for the call; a returned handle or atom carries one new
// reference for the caller. Null is an error wherever it is not said to be allowed. Any thread: a
// directory cannot change.

namespace [[gnu::visibility("hidden")]] KAP_T_MT {

// A directory is a path, kept as it was given: it is not opened and need not exist until it is
// used. The full path of a file is the directory, a slash unless the directory ends in one, and the
// name as it stands: an absolute name is appended as well, and ".." leads out of the directory. A
// relative path counts from the process's working directory at the time of each use.
//
// A failure of the system is an error of the component "KAPUtilsDir" with the errno as its code.
struct KAPUtilsDirInterface
    : TKAPInterface<
          "KAPUtilsDirInterface",
          // The value of the environment variable TMPDIR as it stands, even an empty one; "/tmp"
          // when it is not set.
          TKAPMethod<"GetTempDir", "KAPUtilsDirGetTempDir", KAPError*(KAPUtilsDir** out)>,
          // The process's working directory. "KAPUtilsDirImpl::GetCurrent: Unknown error" when the
          // system does not tell it in 1024 bytes.
          TKAPMethod<"GetCurrent", "KAPUtilsDirGetCurrent", KAPError*(KAPUtilsDir** out)>,
          TKAPMethod<"NewKAPUtilsDir", "KAPUtilsDirNewKAPUtilsDir",
                     KAPError*(KAPUtilsDir** out, KAPStringAtom* path)>,
          // 1 for an entry of any kind, 0 for none. A link counts as what it leads to; a path that
          // cannot be examined counts as absent.
          TKAPMethod<"FileExists", "KAPUtilsDirFileExists",
                     KAPError*(unsigned char* out, KAPUtilsDir* directory, KAPStringAtom* name)>,
          // A file or an empty folder; of a link the link itself. Asks nothing of the host that
          // could be refused. "KAPUtilsDirImpl::Delete: Unknown error".
          TKAPMethod<"Delete", "KAPUtilsDirDelete",
                     KAPError*(KAPUtilsDir* directory, KAPStringAtom* name)>,
          // Both names lie in the directory; what `to` names is replaced.
          // "KAPUtilsDirImpl::Rename: Unknown error".
          TKAPMethod<"Rename", "KAPUtilsDirRename",
                     KAPError*(KAPUtilsDir* directory, KAPStringAtom* from, KAPStringAtom* to)>,
          // The full path; the file need not exist.
          TKAPMethod<"GetFilePathSpec", "KAPUtilsDirGetFilePathSpec",
                     KAPError*(KAPStringAtom** out, KAPUtilsDir* directory, KAPStringAtom* name)>,
          // Creates an empty file, for its owner to read and write only, and answers its name: the
          // prefix, a point and six characters that make it unique, also among processes. What the
          // prefix holds up to its last slash is not part of the name. The file stays until
          // somebody deletes it; on an error there is none. `second` is ignored and may be null.
          // "KAPUtilsDirImpl::createNewFile: Unknown error".
          //
          // Deliberate: each call keeps a descriptor on the file open for the life of the process
          // (not over an exec). A process has a limited number of them, and the storage of a file
          // that was deleted is given back when the process ends.
          TKAPMethod<"CreateUniqueFilename", "KAPUtilsDirCreateUniqueFilename",
                     KAPError*(KAPStringAtom** out, KAPUtilsDir* directory, KAPStringAtom* prefix,
                               KAPStringAtom* second)>> {};

struct KAPUtilsTempFileStreamFactory
    : TKAPInterface<
          "KAPUtilsTempFileStreamFactory",
          // A stream over a new file in the temporary directory, named as by "CreateUniqueFilename"
          // (whose note on descriptors applies). `prefix` holds no slash; `second` is ignored and
          // may be null; `mode` is that of the host's file streams: "w+b" to write and read. When
          // there is no stream, no file stays behind.
          //
          // The release of the stream closes and deletes the file. If deleting fails, the host
          // reports it. A stream that outlives the library's termination leaves its file behind.
          //
          // The streams that "CreateIndependentlyPositionableStream" makes are read-only views of
          // the same file, each with a position of its own. The first of them turns the stream
          // itself into such a view too, at position 0: what was written is then in the file, and
          // nothing more can be written, also when the view itself cannot be made. A view still
          // reads when the file has been deleted, but makes no further views. Several threads may
          // make views at once; otherwise a stream is used by one thread at a time.
          TKAPMethod<"NewTempFileStream", "_KAPUtilsNewTempFileStreamProc_NewTempFileStream",
                     KAPError*(KAPPositionableStream** out, const char* prefix, const char* second,
                               const char* mode)>> {};

}  // namespace KAP_T_MT
