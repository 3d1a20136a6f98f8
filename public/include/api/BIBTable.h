// How each table of named procedures is written once and used by both sides.
//
// Each interface header lists its rows as `INTERFACE_ROWS(ROW)`, one `ROW(operation, procType)` for
// each slot, in order. The client makes its list of names from it, a runtime its list of
// procedures, and both the structure of pointers, so the three always agree.
//
// This header and the interface headers are plain C, so a host may be written in C.
#pragma once

// A slot in the structure of procedure pointers.
#define BIB_TABLE_SLOT(operation, procType) procType operation;

// A row in a list of names: { operation name, proc type name }.
#define BIB_TABLE_NAMES(operation, procType) {#operation, #procType},
