// SPDX-License-Identifier: MIT
#pragma once

#include "kap/KAPInterface.h"

// The interfaces of directories and temporary files, as the library registers them with the binder.
// dir/KAPUtilsDirClient.h has the class.
//
// The conventions of every procedure are those of kap/KAPHostInterfaces.h. In short: the result is
// null or a new reference to an error; a result place is then null or 0. A null result place is an
// error, and nothing is done. Handles, atoms and strings passed in are borrowed for the call; a
// returned handle or atom carries one new reference for the caller. Null is an error unless a
// contract allows it.
//
// Errors: a failing system call is an error of the component "KAPUtilsDir" with the errno as its
//   code and the message that the procedure names. Everything else (a null argument, a handle of
//   another kind, a host that fails) is the error that any procedure returns in that case.

namespace [[gnu::visibility("hidden")]] KAP_T_MT {

// A directory is a path, kept unchanged: it is not opened and need not exist until it is used. It
// cannot change, so any thread may use it. The full path of a file is the directory, a slash unless
// the directory ends in one, and the name unchanged: deliberately, an absolute name is appended as
// well, and ".." leads out of the directory. A relative path is resolved against the working
// directory of the process at each use.
struct KAPUtilsDirInterface
    : TKAPInterface<
          "KAPUtilsDirInterface",
          // The directory for temporary files: the value of the environment variable TMPDIR, even
          // an empty one; "/tmp" when it is not set. [any thread]
          TKAPMethod<"GetTempDir", "KAPUtilsDirGetTempDir", KAPError*(KAPUtilsDir** out)>,
          // The working directory of the process. "KAPUtilsDirImpl::GetCurrent: Unknown error" when
          // the system call fails or the path is longer than 1023 bytes. [any thread]
          TKAPMethod<"GetCurrent", "KAPUtilsDirGetCurrent", KAPError*(KAPUtilsDir** out)>,
          // The directory at `path`, which is not opened. [any thread]
          TKAPMethod<"NewKAPUtilsDir", "KAPUtilsDirNewKAPUtilsDir",
                     KAPError*(KAPUtilsDir** out, KAPStringAtom* path)>,
          // 1 for an entry of any kind, 0 for none. Follows symbolic links; a path that cannot be
          // examined counts as absent. [any thread]
          TKAPMethod<"FileExists", "KAPUtilsDirFileExists",
                     KAPError*(unsigned char* out, KAPUtilsDir* directory, KAPStringAtom* name)>,
          // Deletes a file, an empty directory or a symbolic link itself. Makes no host call that
          // can fail, so a caller can always clean up. "KAPUtilsDirImpl::Delete: Unknown error".
          // [any thread]
          TKAPMethod<"Delete", "KAPUtilsDirDelete",
                     KAPError*(KAPUtilsDir* directory, KAPStringAtom* name)>,
          // Renames `from` to `to`, both in the directory, replacing an existing `to`.
          // "KAPUtilsDirImpl::Rename: Unknown error". [any thread]
          TKAPMethod<"Rename", "KAPUtilsDirRename",
                     KAPError*(KAPUtilsDir* directory, KAPStringAtom* from, KAPStringAtom* to)>,
          // The full path; the file need not exist. [any thread]
          TKAPMethod<"GetFilePathSpec", "KAPUtilsDirGetFilePathSpec",
                     KAPError*(KAPStringAtom** out, KAPUtilsDir* directory, KAPStringAtom* name)>,
          // Creates an empty file that only its owner may read and write, and returns its name: the
          // prefix, a period and six characters that make the name unique, also among processes.
          // The part of the prefix up to its last slash is not part of the name. The file stays
          // until it is deleted; after an error there is none. `second` is ignored and may be null.
          // "KAPUtilsDirImpl::createNewFile: Unknown error".
          //
          // Deliberate: each call keeps a descriptor of the file open (close-on-exec) until the
          // process ends. A process has a limited number of descriptors, and the storage of a
          // deleted file is freed only when the process ends. [any thread]
          TKAPMethod<"CreateUniqueFilename", "KAPUtilsDirCreateUniqueFilename",
                     KAPError*(KAPStringAtom** out, KAPUtilsDir* directory, KAPStringAtom* prefix,
                               KAPStringAtom* second)>> {};

// Streams over temporary files.
struct KAPUtilsTempFileStreamFactory
    : TKAPInterface<
          "KAPUtilsTempFileStreamFactory",
          // A stream over a new file in the directory for temporary files, named as by
          // "CreateUniqueFilename", whose note on descriptors applies. `prefix` contains no slash;
          // `second` is ignored and may be null; `mode` is one of fopen's: "w+b" writes and reads.
          // When the call fails, no file remains. When "KAPUtilsDirInterface" is gone, the error is
          // the one with the empty message.
          //
          // The last release of the stream closes and deletes the file; the host reports a deletion
          // that fails. If a stream outlives the library's termination, its file remains.
          //
          // "CreateIndependentlyPositionableStream" makes read-only views of the file, each with a
          // position of its own. The first call also turns the stream itself into a view, at
          // position 0: everything written is then in the file, and nothing more can be written,
          // even if the call goes on to fail. A view can still be read after the file is deleted,
          // but makes no further views. Each is opened through the descriptor of the file, so that
          // it reads this file even if its name leads to another one by now. Where the descriptor
          // was closed, the name is used, and if it leads to another file, the error is "the
          // temporary file was replaced". Several threads may make views at the same time.
          // [any thread]
          TKAPMethod<"NewTempFileStream", "_KAPUtilsNewTempFileStreamProc_NewTempFileStream",
                     KAPError*(KAPPositionableStream** out, const char* prefix, const char* second,
                               const char* mode)>> {};

// Both, in the order of registration.
using KAPUtilsDirInterfaceSet =
    TKAPInterfaceSet<KAPUtilsDirInterface, KAPUtilsTempFileStreamFactory>;

}  // namespace KAP_T_MT
