// The settings, all from the registry and only read: text-file defaults, customer, options.
// There is no failure path: what is missing or can't be read is the empty text, and the defaults
// take over. A value counts as blank if nothing but blanks (U+0020) is in it; a value that isn't
// blank is kept as read, with the blanks around it.
#pragma once

#include "langtools/Text.h"
#include "platform/Registry.h"

namespace nomira {

// The customer value that selects the customer variant: other key names and default paths.
// Compared exactly.
inline constexpr TextView kCustomerVw = u"VW";

// A value of the registry that the program reads.
struct Setting {
    RegistryRoot root;
    TextView sKey;
    TextView sValue;
};
inline constexpr TextView kLongnameKey = u"Software\\Nomira Program Settings\\Longname";
inline constexpr TextView kVersionKey = u"Software\\Orvo\\Version";
// The name of the first value is what is stored, misspelt.
inline constexpr Setting kTextFileExtSetting{RegistryRoot::CurrentUser, kLongnameKey,
                                             u"TextFileExtention"};
inline constexpr Setting kTextFileNameSetting{RegistryRoot::CurrentUser, kLongnameKey,
                                              u"TextFileName"};
inline constexpr Setting kTextFilePathSetting{RegistryRoot::CurrentUser, kLongnameKey,
                                              u"TextFilePath"};
inline constexpr Setting kAsciiOptionSetting{RegistryRoot::LocalMachine,
                                             u"Software\\Orvo\\Options\\ASCII", u"Name"};
inline constexpr Setting kCustomerSetting{RegistryRoot::LocalMachine, kVersionKey, u"Customer"};
inline constexpr Setting kInstallDirSetting{RegistryRoot::LocalMachine, kVersionKey,
                                            u"InstallationDir"};
inline constexpr Setting kLanguageSetting{RegistryRoot::CurrentUser, u"Software\\Orvo\\Database",
                                          u"Language"};
// All of them, in the order of their first use.
inline constexpr Setting kSettings[]{
    kTextFileExtSetting, kTextFileNameSetting, kTextFilePathSetting, kAsciiOptionSetting,
    kCustomerSetting,    kInstallDirSetting,   kLanguageSetting};

// File pattern of the text file, such as u"*.txt"; its last four characters are the extension of
// the default file name.
extern Text g_sTextFileExt;
// Base name of the text file.
extern Text g_sTextFileName;
// Directory of the text file, relative to g_sInstallDir, with a leading "\".
extern Text g_sTextFilePath;

// The value's text: its bytes but for the last one, which in a string value is the terminator.
// Clears sResult on entry and leaves the text there too. Empty if the key or value is missing.
// Raises Overflow for a value of more than 32,769 bytes, for the bytes are counted with 16 bits.
Text ReadRegistryString(RegistryRoot root, TextView sKey, TextView sValueName, Text& sResult);
Text ReadRegistryString(const Setting& setting, Text& sResult);

// The customer's name, or the empty text if it is blank. Reads the registry at each call.
Text GetCustomer();
// Whether this is an installation of the customer variant: GetCustomer equals kCustomerVw.
bool IsCustomerVw();
// Whether the ASCII option has left its name in the registry. Reads the registry at each call.
bool IsAsciiOptionInstalled();

// Where the text file lies on this installation unless a setting says otherwise, relative to
// g_sInstallDir; it follows from customer and option, which are read for it.
TextView DefaultTextFilePath();

// Sets the three text-file settings; called once, by Main.
void ReadTextFileSettings();

}  // namespace nomira
