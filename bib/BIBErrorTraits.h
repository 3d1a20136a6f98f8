// The bound table of the error interface.
#pragma once

#include "api/BIBErrorInterface.h"
#include "bib/BIBInterfaceClient.h"

namespace BIB_T_NMT {

BIB_DECLARE_INTERFACE(BIBErrorInterface, BIBErrorTraits, BIB_ERROR_INTERFACE_ROWS, 8);

} // namespace BIB_T_NMT
