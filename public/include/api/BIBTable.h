// How a table of named procedures is written down once and used by both sides.
//
// Each interface header lists its rows as `INTERFACE_ROWS(ROW)`, one `ROW(operation, procType)` in
// slot order. The client makes its list of names of it, a runtime its list of procedures, and both
// the structure of pointers, so that the three cannot disagree.
//
// The header is plain C, as are the interface headers: a host may be written in C.
#pragma once

// A slot of the structure of procedure pointers.
#define BIB_TABLE_SLOT(operation, procType) procType operation;

// A row of a list of names: { operation name, proc type name }.
#define BIB_TABLE_NAMES(operation, procType) {#operation, #procType},
