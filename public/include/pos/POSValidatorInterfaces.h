// SPDX-License-Identifier: MIT
#pragma once

#include "kap/KAPInterface.h"

// The interfaces of validators, as they are registered with the binder. A validator checks property
// objects against the named types of a schema, a dictionary such as
//
//   < Age    < category int min 0 maxexcl 150 >
//     Person < category dict required < name string > optional < age Age > > >
//
// Conventions of every procedure but "ValidateSchema": a failure is reported to the binder, and the
// result is null or false. Handles and atoms passed in are borrowed for the call; a handle returned
// carries one new reference for the caller. For the thread tags see kap/KAPInterface.h.
//
// A check runs the callbacks that are registered for types, on its own thread. Such a callback may
// change the object or the schema: objects in use stay alive, and the current step finishes with
// the contents it started with; later steps see the changes. Other threads change neither during a
// check.

namespace [[gnu::visibility("hidden")]] KAP_T_MT {

// Receives one message, a terminated text borrowed for the call. It must not throw.
using POSMessageProc = void (*)(const char* message);

// An extra validation of objects that comply with their type. Returns nonzero when the object
// passes, else 0, with the reason as a terminated text in the buffer. The buffer has 1024 bytes,
// zeroed; a reason without terminator is cut. Handles are borrowed for the call. It must not throw.
using POSExtraValidationProc = long (*)(POSObject* object, KAPStringAtom* typeName,
                                        KAPSharedBuffer* buffer, void* clientData);

// What every validator has. The library's own validators offer this as a method of their container
// too, and so may those of any other component; CPOSValidator asks the container.
struct POSValidatorInterface
    : TKAPInterface<"POSValidatorInterface",
                    // Whether the object complies with the type. If not, `message`, unless null, is
                    // called for each reason, after all checks. An error in the schema, found where
                    // it is first needed, is a failure: it is reported, and there are no messages.
                    // So is nesting too deep for the stack of this thread. [shared read]
                    TKAPMethod<"Validate", "POSValidatorValidateProc",
                               bool(POSValidator* validator, POSObject* object,
                                    KAPStringAtom* typeName, POSMessageProc message)>> {};

// Validators over a schema.
struct POSStructValidatorInterface
    : TKAPInterface<
          "POSStructValidatorInterface",
          // A validator that keeps a reference to the schema. The schema itself is not checked,
          // deliberately: that is what "ValidateSchema" is for. [any thread]
          TKAPMethod<"NewPOSStructValidator", "POSStructValidatorNewStructValidatorProc",
                     POSValidator*(POSDict* schema)>,
          // Registers `callback`, which is then called for each object that complies with the type.
          // Replaces the type's previous callback; null removes it. A callback may itself register
          // callbacks. Never called for intrinsic types. `clientData` is passed to the callback.
          // [exclusive]
          TKAPMethod<"RegisterCallbackProc", "POSStructValidatorRegisterCallbackProc",
                     void(POSValidator* validator, KAPStringAtom* typeName,
                          POSExtraValidationProc callback, void* clientData)>,
          // Whether the dictionary is a schema, by the rules of the built-in schema of schemas;
          // `message` as for "Validate". Deliberately the one procedure that lets exceptions
          // through: nothing is reported, and the caller, which is C++, may catch what its check
          // throws (as std::exception). [shared read]
          TKAPMethod<"ValidateSchema", "POSStructValidatorValidateSchemaProc",
                     bool(POSDict* schema, POSMessageProc message), kKAPThrows>> {};

}  // namespace KAP_T_MT
