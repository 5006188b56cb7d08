// SPDX-License-Identifier: MIT
#pragma once

#include "kap/KAPInterface.h"

// Labels of property objects, by a component that has a bug in each procedure.
struct LabelsInterface
    : KAP_T_MT::TKAPInterface<
          "LabelsInterface",
          // The value of the key "label": a new reference, or null. [shared read]
          KAP_T_MT::TKAPMethod<"Find", "LabelsFindProc", POSObject*(POSDict* dict)>,
          // Whether the first element is a number. [shared read]
          KAP_T_MT::TKAPMethod<"StartsWithNumber", "LabelsStartsWithNumberProc",
                               bool(POSArray* array)>,
          // The length of the text in bytes. [any thread]
          KAP_T_MT::TKAPMethod<"Length", "LabelsLengthProc", unsigned long(const char* text)>,
          // The number of labels. [shared read]
          KAP_T_MT::TKAPMethod<"Count", "LabelsCountProc",
                               KAPError*(unsigned long* out, POSArray* array)>> {};
