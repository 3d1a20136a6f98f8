// The static objects of the POS client, in one file because the order of their construction
// matters. They are constructed after those of the BIB client: this file is linked after BIB.cpp.

#include "bib/POSCollections.h"
#include "bib/POSObject.h"
#include "bib/POSScalars.h"
#include "bib/POSValidator.h"

namespace BIB_T_NMT {

constinit _t_POSObjectStatics const* CPOSObject::fStaticProcs = nullptr;
constinit _t_POSNumberInterface const* CPOSNumber::fProcs = nullptr;
constinit _t_POSStringInterface const* CPOSString::fProcs = nullptr;
constinit _t_POSUnicodeStringInterface const* CPOSUnicodeString::fProcs = nullptr;
constinit _t_POSBinDataInterface const* CPOSBinData::fProcs = nullptr;
constinit _t_POSArrayInterface const* CPOSArray::fProcs = nullptr;
constinit _t_POSDictInterface const* CPOSDict::fProcs = nullptr;
constinit _t_POSDictIteratorInterface const* CPOSDictIterator::fProcs = nullptr;
constinit _t_POSStructValidatorInterface const* CPOSStructValidator::fProcs = nullptr;

constinit TBIBVTabList<_t_POSObjectVirtualInterface> CPOSObject::fVTabList;
constinit TBIBVTabList<_t_POSValidatorVirtualInterface> CPOSValidator::fVTabList;

CPOSObjectTerminate CPOSObject::fTerm;
CPOSValidatorTerminate CPOSValidator::fTerm;

} // namespace BIB_T_NMT
