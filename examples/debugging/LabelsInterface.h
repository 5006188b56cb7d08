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
                               KAPError*(unsigned long* out, POSArray* array)>,
          // The length of the text without its first character. [any thread]
          KAP_T_MT::TKAPMethod<"RestLength", "LabelsRestLengthProc",
                               unsigned long(const char* text)>,
          // The text of the label, which lives as long as the dictionary. [shared read]
          KAP_T_MT::TKAPMethod<"Text", "LabelsTextProc", const char*(POSDict* dict)>,
          // The number that a label stands for. [any thread]
          KAP_T_MT::TKAPMethod<"Parse", "LabelsParseProc",
                               KAPError*(double* out, const char* text)>,
          // Whether two texts are the same label. [any thread]
          KAP_T_MT::TKAPMethod<"IsSame", "LabelsIsSameProc",
                               bool(const char* text, const char* other)>> {};
