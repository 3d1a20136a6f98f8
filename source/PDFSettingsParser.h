// The job options format: an object with both forms of a set of settings.
#pragma once

#include "bib/BIBClient.h"
#include "bib/BIBStream.h"
#include "bib/POSCollections.h"
#include "bib/POSScalars.h"

namespace JoboptionsParserUtils {

// The type names of the binary data in which strings and hexadecimal strings are stored, with
// exactly the bytes of the text.
inline constexpr char kJoboptionsStringBinType[] = "JoboptionsString";
inline constexpr char kJoboptionsUnicodeStringBinType[] = "JoboptionsUnicodeString";

// Throws the CPDFSettingsError for text that is not job options text.
[[noreturn]] void ThrowInvalidFile();

// Binary data of the bytes from begin to end.
BIB_T_NMT::CPOSBinData MakeBinData(char const* typeName, char const* begin, char const* end);

} // namespace JoboptionsParserUtils

namespace PDFSettingsImpl {

// The key of the unparsed rest of a file, and the type name of its binary data.
inline constexpr char kAlembicorData[] = "AlembicorData";

// A set of settings as a dictionary and as text. Use it on one thread.
//
// Booleans and names are 8-bit strings, every number is a double, and strings are binary data with
// the bytes of the text (see above). What follows the keyword is binary data under kAlembicorData.
class PDFSettingsParser : public BIB_T_NMT::CBIBVirtualClientBase {
public:
    // Reads stream, whose position stays at the end of the reading. Throws CPDFSettingsError for a
    // rejected text, the memory error, and the stream's errors.
    explicit PDFSettingsParser(BIB_T_NMT::CBIBPositionableStream const& stream);

    // Writes settings. Throws as CPOSDict_To_Joboptions does.
    explicit PDFSettingsParser(BIB_T_NMT::CPOSDict const& settings);

    BIB_T_NMT::CPOSDict const& GetPDFSettings() const noexcept { return fSettings; }
    BIB_T_NMT::CBIBPositionableStream const& GetJoboptions() const noexcept { return fJoboptions; }

    // The settings in a stream. Throws as the constructor does.
    static BIB_T_NMT::CPOSDict
    Joboptions_To_CPOSDict(BIB_T_NMT::CBIBPositionableStream const& stream);

    // The text of settings in a new stream, at its start. Without kAlembicorData, the text ends
    // with a default tail. The key is removed from settings while the entries are written, and then
    // stored again.
    //
    // A value that cannot be written causes no exception: the stream is then empty if the settings
    // have kAlembicorData, and otherwise contains the default tail alone. Throws POSException if
    // that key has no binary data, the memory error if the settings are nested deeper than the
    // stack allows or than 5,000 levels, and CBIBError if no stream can be made.
    static BIB_T_NMT::CBIBPositionableStream
    CPOSDict_To_Joboptions(BIB_T_NMT::CPOSDict const& settings);

private:
    BIB_T_NMT::CPOSDict fSettings;
    BIB_T_NMT::CBIBPositionableStream fJoboptions;
};

} // namespace PDFSettingsImpl
