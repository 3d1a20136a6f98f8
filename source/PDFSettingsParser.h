// The job options format, as a value that holds both forms of a set of settings.
#pragma once

#include "bib/BIBClient.h"
#include "bib/BIBStream.h"
#include "bib/POSCollections.h"
#include "bib/POSScalars.h"

namespace JoboptionsParserUtils {

// The type names of the binary data that strings and hexadecimal strings are kept in, byte for byte
// as they stand in the text.
inline constexpr char kJoboptionsStringBinType[] = "JoboptionsString";
inline constexpr char kJoboptionsUnicodeStringBinType[] = "JoboptionsUnicodeString";

// Throws the CPDFSettingsError for a text that is no job options text.
[[noreturn]] void ThrowInvalidFile();

// Binary data of the bytes from begin to end.
BIB_T_NMT::CPOSBinData MakeBinData(char const* typeName, char const* begin, char const* end);

} // namespace JoboptionsParserUtils

namespace PDFSettingsImpl {

// The key under which the unparsed rest of a file is kept, and the type name of its binary data.
inline constexpr char kAlembicorData[] = "AlembicorData";

// A set of settings as a dictionary and as text. Lives on one thread.
//
// Booleans and names are 8-bit strings, every number is a double, strings are binary data that hold
// the text's own bytes (see above), and what follows the keyword is binary data under
// kAlembicorData.
class PDFSettingsParser : public BIB_T_NMT::CBIBVirtualClientBase {
public:
    // Reads stream, which stays where the reading left it. Throws CPDFSettingsError for a text that
    // is refused, the memory error, and the stream's errors.
    explicit PDFSettingsParser(BIB_T_NMT::CBIBPositionableStream const& stream);

    // Writes settings. Throws as CPOSDict_To_Joboptions.
    explicit PDFSettingsParser(BIB_T_NMT::CPOSDict const& settings);

    BIB_T_NMT::CPOSDict const& GetPDFSettings() const noexcept { return fSettings; }
    BIB_T_NMT::CBIBPositionableStream const& GetJoboptions() const noexcept { return fJoboptions; }

    // The settings in a stream. Throws as the constructor.
    static BIB_T_NMT::CPOSDict
    Joboptions_To_CPOSDict(BIB_T_NMT::CBIBPositionableStream const& stream);

    // The text of settings in a new stream at its start. Without kAlembicorData the text ends with
    // a default tail. The key is taken out of settings while the entries are written, and put back.
    //
    // A value that cannot be written raises nothing: the stream is then empty if the settings have
    // kAlembicorData, and holds the default tail alone if they do not. Throws POSException when
    // that key holds no binary data, the memory error when the settings are nested deeper than the
    // stack can bear or than 5,000 levels, and CBIBError when no stream can be made.
    static BIB_T_NMT::CBIBPositionableStream
    CPOSDict_To_Joboptions(BIB_T_NMT::CPOSDict const& settings);

private:
    BIB_T_NMT::CPOSDict fSettings;
    BIB_T_NMT::CBIBPositionableStream fJoboptions;
};

} // namespace PDFSettingsImpl
