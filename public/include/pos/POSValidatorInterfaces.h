#pragma once

#include "kap/KAPInterface.h"

// The interfaces of validators, as they are registered with the binder. A validator checks property
// objects against the named types of a schema.
//
// Conventions of every procedure but "ValidateSchema": a failure is reported to the binder and gives
// null or false. Handles and atoms passed in are borrowed for the call; a returned handle carries
// one new reference for the caller.
//
// Threads: any number may check with one validator, while nobody changes the objects checked or the
// schema, or registers a callback. That holds for the callbacks themselves too: what is being
// checked must not be changed by them.

namespace [[gnu::visibility("hidden")]] KAP_T_MT {

// Receives one message, a text borrowed for the call.
using POSMessageProc = void (*)(const char* message);

// An extra validation of objects that comply with their type: nonzero when the object passes, else
// 0, with the reason as a terminated text in the buffer. The buffer has 1024 bytes, zeroed; what
// does not fit with a terminator is cut. Handles are borrowed for the call. Must not throw.
using POSExtraValidationProc = long (*)(POSObject* object, KAPStringAtom* typeName,
                                        KAPSharedBuffer* buffer, void* clientData);

struct POSValidatorInterface
    : TKAPInterface<"POSValidatorInterface",
                    // Whether the object complies with the type. If not, `message` (which may be
                    // null) is called for each reason, after all checks and on this thread. An
                    // error in the schema, found where it is first needed, is reported and gives
                    // false without any message.
                    TKAPMethod<"Validate", "POSValidatorValidateProc",
                               bool(POSValidator* validator, POSObject* object,
                                    KAPStringAtom* typeName, POSMessageProc message)>> {};

struct POSStructValidatorInterface
    : TKAPInterface<
          "POSStructValidatorInterface",
          // A validator that keeps a reference to the schema. The schema itself is not checked,
          // deliberately: that is what "ValidateSchema" is for.
          TKAPMethod<"NewPOSStructValidator", "POSStructValidatorNewStructValidatorProc",
                     POSValidator*(POSDict* schema)>,
          // Has `callback` called for each object that complies with the type; it replaces the one
          // that the type had, and null ends that. Never called for intrinsic types.
          TKAPMethod<"RegisterCallbackProc", "POSStructValidatorRegisterCallbackProc",
                     void(POSValidator* validator, KAPStringAtom* typeName,
                          POSExtraValidationProc callback, void* clientData)>,
          // Whether the dictionary is a schema, by the rules of the built-in schema of schemas;
          // `message` as for "Validate". Deliberately the one procedure that lets exceptions pass:
          // nothing is reported, and the caller, who is C++, may catch what its check raises (as
          // std::exception).
          TKAPMethod<"ValidateSchema", "POSStructValidatorValidateSchemaProc",
                     bool(POSDict* schema, POSMessageProc message)>> {};

}  // namespace KAP_T_MT
