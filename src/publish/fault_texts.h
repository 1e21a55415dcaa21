#pragma once

// The faults that tmpublish finds, and the errors that end a run; %1 to %9 stand for the values
// that tools::Fill puts in.
namespace publish::texts {

// Where a fault was found, if not in a file or table.
inline constexpr const char* kInDescription = "description";
inline constexpr const char* kInDigest = "digest";
inline constexpr const char* kInManifest = "manifest";
inline constexpr const char* kInScripts = "scripts";
inline constexpr const char* kInServers = "servers";
inline constexpr const char* kInUpdater = "updater";

// Any file and any name.
inline constexpr const char* kUnreadable = "Cannot be read:\n%1";
inline constexpr const char* kWrongRoot = "Its root element is not %1.";
inline constexpr const char* kRefused = "The updater refuses it: %1";
inline constexpr const char* kFitsNoAddress =
    "Nobody could download it: #, % and ? mean something else in an address.";
inline constexpr const char* kNoHash = "The hash is no SHA-256 in lower case.";
inline constexpr const char* kOutsideCodePage = "It has characters outside code page 1251.";
inline constexpr const char* kTooLong =
    "It is longer than the 2147483647 bytes that the updater can count.";
inline constexpr const char* kNotAFile = "Neither a file nor a folder.";
inline constexpr const char* kLinkLeadsBack = "A link to a folder that contains it.";

// The description. The place, which precedes the text, ends with the attribute or element.
inline constexpr const char* kUnknownAttribute = "is no attribute of this.";
inline constexpr const char* kUnknownElement = "is not known here.";
inline constexpr const char* kMissing = "is missing.";
inline constexpr const char* kMustBe = "must be \"%1\".";
inline constexpr const char* kMustBeNumbers[] = {"", "", "must be two numbers.",
                                                 "must be three numbers.", "must be four numbers."};
inline constexpr const char* kNoFolderName =
    "names a folder on users' machines, and this is no name for one.";
inline constexpr const char* kNoArchive = "is RAR5 or RAR4.";
inline constexpr const char* kNoTruth = "is \"yes\" or \"no\".";
inline constexpr const char* kNoDate = "is a day, YYYY-MM-DD.";
inline constexpr const char* kNoPackMethod = "is 1, 2 or 3.";
inline constexpr const char* kNoUpdater = "has no element Updater.";
inline constexpr const char* kNamesNoServer = "names no server.";

// The digest and the list of servers.
inline constexpr const char* kWrongLineEnds = "Its lines do not all end with CR LF.";
inline constexpr const char* kFewLines = "It has less than two lines.";
inline constexpr const char* kNoVersion = "The first line is no version of four numbers.";
inline constexpr const char* kNoNeededUpdater = "The second line is no version of the updater.";
inline constexpr const char* kFewFields = "A file of the updater has a name, a size and a hash.";
inline constexpr const char* kNoSize = "The size is no number of bytes.";
inline constexpr const char* kNameTwice = "The name comes twice.";
inline constexpr const char* kOldUpdatersStop =
    "Updaters older than %1 would stop: there is no file to replace themselves by.";
inline constexpr const char* kNoProgram =
    "The updater starts the first of its files, and this is no program: %1.";
inline constexpr const char* kLineTwice = "The line %1 comes twice.";
inline constexpr const char* kNotSizeAndHash = "It is no size and SHA-256 in lower case.";
inline constexpr const char* kNotWholeNumber = "It is no number.";
inline constexpr const char* kNoDay = "It is no day, YYYY-MM-DD.";
inline constexpr const char* kNoAddress = "This is no address of a server: %1.";
inline constexpr const char* kNoServer = "It names no server.";

// The manifest's lists.
inline constexpr const char* kNegative = "A negative number of bytes.";
inline constexpr const char* kNotOneElement = "%1 elements %2 instead of one.";
inline constexpr const char* kIsComUnclear = "IsCom is neither yes nor no.";
inline constexpr const char* kUsersOwn =
    "It has the name of the user's own database, which the updater never replaces.";
inline constexpr const char* kUnknownConstant = "Its folder has an unknown constant: %1.";
inline constexpr const char* kSamePlace = "It is installed where %1 is installed.";
inline constexpr const char* kSameServerName = "On the server it has the name of %1.";
inline constexpr const char* kTwoContents =
    "The updater keeps one content for a file's name, and %1 has another file of this name.";
inline constexpr const char* kTableTwice = "The table comes twice.";
inline constexpr const char* kVersionTable =
    "The table tells a database's version and is never carried.";
inline constexpr const char* kFileOfTable = "A program file has the name of the table's file.";
inline constexpr const char* kTooMuch =
    "All together is more than the 2147483647 bytes that the updater counts.";
inline constexpr const char* kManifestTooLong = "It has grown longer than the updater reads.";

// What a server offers.
inline constexpr const char* kNotFetched = "Cannot be had: %1";
inline constexpr const char* kNotFetchedAs = "Cannot be had as %1: %2";
inline constexpr const char* kNoSuchFile = "there is no such file.";
inline constexpr const char* kLongerThan = "it is longer than %1 bytes.";
inline constexpr const char* kWrongServerLength = "On the server %1 has %2 bytes instead of %3.";
inline constexpr const char* kWrongLength = "It has %1 bytes instead of %2.";
inline constexpr const char* kDiffersFromDigest = "Its hash differs from the digest's.";
inline constexpr const char* kDiffersFromManifest = "Its hash differs from the manifest's.";
inline constexpr const char* kNotTheBoundManifest = "It is not the one that the digest announces.";
inline constexpr const char* kTextDiffers = "The hash of its text differs from the manifest's.";
inline constexpr const char* kNotJustText =
    "Its file is not just the text in UTF-16 (a byte-order mark?): an interrupted update would "
    "download it again.";
inline constexpr const char* kUnknownPackMethod = "Unknown pack method %1.";
inline constexpr const char* kPackageLacksIntegrity = "The package lacks good integrity data.";
inline constexpr const char* kFileLacksIntegrity = "The file lacks good integrity data.";
inline constexpr const char* kOtherProduct = "It is of another product: %1.";
inline constexpr const char* kOtherVersion = "It is of version %1, the digest announces %2.";
inline constexpr const char* kVersionIdRefused = "The updater refuses VersionID: %1";
inline constexpr const char* kNoStructure = "The package of structures has no %1.";

// The product's files and packages.
inline constexpr const char* kNoFolderRule =
    "No Folder of the description says where it is installed.";
inline constexpr const char* kMatchesNoFile = "The product has no file %1.";
inline constexpr const char* kReadyWithIntegrity =
    "A ready-made package cannot have pack method 2.";
inline constexpr const char* kPackageLacksFile = "Its package %1 does not give it: %2";
inline constexpr const char* kPackageHoldsOther = "Its package %1 holds another content.";
inline constexpr const char* kNotUtf16 =
    "It is no UTF-16 text without a byte-order mark: with pack method 3 every run of the updater "
    "would download it again.";
inline constexpr const char* kUpdaterNameTaken =
    "Another file of the release has this name on the server.";
inline constexpr const char* kUpdaterFileMissing = "This file of the updater is missing.";
inline constexpr const char* kOutputInProduct =
    "It lies in the product's folder: the next release would contain this one.";
inline constexpr const char* kPublishedAlready = "This version has been published already.";

// Update scripts.
inline constexpr const char* kNoScriptHead =
    "It does not begin with an XML declaration and the root element behind it.";
inline constexpr const char* kWrongScriptRoot = "The root element has a wrong name: %1.";
inline constexpr const char* kNoScriptVersion = "%1 is not a version of three numbers.";
inline constexpr const char* kStandingStep = "It ends at no later version than it starts from.";
inline constexpr const char* kFromWrittenOtherwise =
    "The updater looks for the script of version %1, and db_version_from is written otherwise: %2.";
inline constexpr const char* kHasNo = "%1 has no %2.";
inline constexpr const char* kUnknownFieldType = "Unknown type of a field: %1.";
inline constexpr const char* kUnknownMigration = "Unknown migration: %1.";
inline constexpr const char* kUnknownAction = "Unknown type of an action: %1.";
inline constexpr const char* kSameStart = "Starts from %1, as %2 does.";
inline constexpr const char* kGap = "No script leads on from version %1 to %2.";

// The tables of the reference database and their texts.
inline constexpr const char* kUnknownKind =
    "The description does not say what kind of table it is.";
inline constexpr const char* kMatchesNoTable =
    "The reference database has no table %1, or a later line says otherwise.";
inline constexpr const char* kNotImported = "The updater could not import it: line %1: %2";
inline constexpr const char* kOtherTable = "It is the text of the table %1.";
inline constexpr const char* kCarriesRows = "It carries rows.";
inline constexpr const char* kCarriesNoRows = "It carries no rows.";

// Errors that end a run; paths come in quotes. A text that ends with a blank is the line above the
// system's error text.
inline constexpr const char* kNoXmlComponent = "No XML component: %1";
inline constexpr const char* kNoFolder = "No folder %1.";
inline constexpr const char* kNoFile = "No file %1.";
inline constexpr const char* kAnotherRun = "Another run is publishing this version: %1.";
inline constexpr const char* kCannotRead = "Cannot read %1: ";
inline constexpr const char* kCannotReadFolder = "Cannot read the folder %1: ";
inline constexpr const char* kCannotReplace = "Cannot replace %1: ";
inline constexpr const char* kCannotRename = "Cannot rename %1 to %2: ";
inline constexpr const char* kCannotRemove = "Cannot remove %1: ";
inline constexpr const char* kCannotRemoveFolder = "Cannot remove the folder %1: ";
inline constexpr const char* kCannotCreateFolder = "Cannot create the folder %1: ";
inline constexpr const char* kCannotLock = "Cannot lock %1: ";

// Steps of a run, as the progress line names them.
inline constexpr const char* kTables = "tables";
inline constexpr const char* kFiles = "files";
inline constexpr const char* kComponents = "components";

// What the listing of a release calls its files.
inline constexpr const char* kListingHead = "%1: bytes, server name, what it is\n";
inline constexpr const char* kListOfFiles = "list of files";
inline constexpr const char* kUpdateScripts = "update scripts";
inline constexpr const char* kStructures = "structures of the user's tables";
inline constexpr const char* kUpdatersFile = "the updater's own file";
inline constexpr const char* kDictionary = "dictionary %1";
inline constexpr const char* kIsCom = ", COM";

}  // namespace publish::texts
