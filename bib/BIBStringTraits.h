// The bound table of the string atom interface.
#pragma once

#include "api/BIBStringInterface.h"
#include "bib/BIBInterfaceClient.h"

namespace BIB_T_NMT {

BIB_DECLARE_INTERFACE(BIBStringInterface, BIBStringTraits, BIB_STRING_INTERFACE_ROWS, 4);

} // namespace BIB_T_NMT
