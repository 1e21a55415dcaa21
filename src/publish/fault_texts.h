#pragma once

// The faults that tmpublish finds, and the errors that end a run; %1 to %9 stand for the values
// that tools::Fill puts in.
namespace publish::texts {

// Where a fault was found, if not in a file or table.
inline constexpr const char* kInDigest = "digest";
inline constexpr const char* kInManifest = "manifest";
inline constexpr const char* kInScripts = "scripts";
inline constexpr const char* kTheManifest = "The manifest";
inline constexpr const char* kInServers = "servers";

// Any file and any name.
inline constexpr const char* kReason = "%1";
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
inline constexpr const char* kUpdaterTooOld =
    "It demands updaters of version %1, but %2, by which older ones replace themselves, has version "
    "%3 (of each number by itself): nobody could update.";
inline constexpr const char* kUpdaterUnknown =
    "It demands updaters of version %1. The release's updater does not say its version, and this "
    "program knows none above %2 (in each number by itself): nobody could update.";
inline constexpr const char* kOldUpdatersStop =
    "Updaters older than %1 would stop: there is no file to replace themselves by.";
inline constexpr const char* kNoProgram =
    "The updater starts the first of its files, and this is no program: %1.";
inline constexpr const char* kLineTwice = "The line %1 comes twice.";
inline constexpr const char* kNotSizeAndHash = "It is no size and SHA-256 in lower case.";
inline constexpr const char* kNotWholeNumber = "It is no number.";
inline constexpr const char* kNoDay = "It is no day, YYYY-MM-DD.";
inline constexpr const char* kNoAddress = "This is no address of a server: %1.";
inline constexpr const char* kNoScheme =
    "%1 has no scheme: updaters take it for http://%1, whose answers anybody on the way can replace.";
inline constexpr const char* kNoServer = "It names no server.";

// Signing and announcing.
inline constexpr const char* kWasSigned =
    "The announced digest is signed, and updaters with a key accept no other: sign this one too.";
inline constexpr const char* kSerialNotKnown =
    "The announced digest cannot be read, and with it the serial: give --serial.";
inline constexpr const char* kSerialNotHigher =
    "The serial must be higher than the announced one, %1.";
inline constexpr const char* kSerialTooHigh = "The serial is above %1.";
inline constexpr const char* kNothingKept =
    "It has no _Announcement.txt: publish this version again with --replace.";
inline constexpr const char* kKeptForOther = "It announces version %1.";
inline constexpr const char* kChangedSincePublished = "It is not the file that was published.";
inline constexpr const char* kNewerAnnounced =
    "Version %1 is announced, which is newer; retract announces an older one, --downgrade any.";
inline constexpr const char* kNothingToGoBackTo = "There is no older release to announce.";
inline constexpr const char* kAnnouncedMissing =
    "Version %1 is announced, and its folder is not here: nothing is removed.";
inline constexpr const char* kNothingAnnounced = "Nothing is announced here.";

// The signature of a digest, as an updater with the key judges it.
inline constexpr const char* kNoSignature = "Its signature %1 cannot be had: %2";
inline constexpr const char* kSignatureMalformed = "The file of the signature is malformed.";
inline constexpr const char* kSignatureOfOtherKind =
    "The signature is of the older kind, which updaters refuse.";
inline constexpr const char* kSignedByOther = "The signature is of the key %1, which is not given.";
inline constexpr const char* kSignatureDiffers = "The signature does not belong to the digest.";
inline constexpr const char* kSignedLinesMissing =
    "Updaters with a key demand the lines manifest:, product:, serial: and expires:.";
inline constexpr const char* kSignedForOther = "It is signed for another product: %1.";
inline constexpr const char* kExpired = "It has expired: its last day is %1.";
inline constexpr const char* kExpiresSoon = "It expires on %1: sign it again with tmpublish renew.";
inline constexpr const char* kCopyDiffers =
    "It is not the digest's signature, which people would verify with it.";
inline constexpr const char* kOpenServers =
    "%1 of %2 servers are not https, and the digest has no line manifest: whoever is on the way can "
    "put a release of their own in the place of this one.";

// The manifest's lists.
inline constexpr const char* kNegative = "A negative number of bytes.";
inline constexpr const char* kNotOneElement = "%1 elements %2 instead of one.";
inline constexpr const char* kIsComUnclear = "IsCom is neither yes nor no.";
inline constexpr const char* kUsersOwn =
    "It has the name of the user's own database or of a backup, which the updater never replaces.";
inline constexpr const char* kUpdatersNotes =
    "It has the name of a file or lies in a folder in which the updater keeps what it must remember.";
inline constexpr const char* kUnknownConstant = "Its folder has an unknown constant: %1.";
inline constexpr const char* kSamePlace = "It is installed where %1 is installed.";
inline constexpr const char* kSameServerName = "On the server it has the name of %1.";
inline constexpr const char* kTwoContents =
    "The updater keeps one content for a file's name, and %1 has another file of this name.";
inline constexpr const char* kTableTwice = "The table comes twice.";
inline constexpr const char* kVersionTable =
    "The table holds a database's version or belongs to the database engine, and is never carried.";
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
inline constexpr const char* kMatchesNoFile = "\"%1\" matches no file of the product.";
inline constexpr const char* kNoImage =
    "%1 marks it as IsCom, but it is no program or library that can be registered.";
inline constexpr const char* kRegistersNothing =
    "%1 marks it as IsCom, but it exports no DllRegisterServer: it could not be registered.";
inline constexpr const char* kOtherBits =
    "%1 marks it as IsCom, but it has %2 bits and the rest of the product has %3: it could not be "
    "registered where the product looks for it.";
inline constexpr const char* kScriptCompanion =
    "%1 is a file of the release, too: the updater, which otherwise removes the .xml beside a .tms "
    "that it replaces, leaves this one as the release has it.";
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
inline constexpr const char* kMalformedStatement = "Statement %1 cannot be read: %2 In: %3";
inline constexpr const char* kStatementsNotRead =
    "The statements have not been read: there is no database engine: %1";
inline constexpr const char* kBeyond =
    "It leads from %1 to %2, beyond the release's version %3, and so would the user's database be.";
inline constexpr const char* kNeverRun =
    "No update runs it: it starts from %1, and the release's version is %2.";
inline constexpr const char* kIgnored = "The updater knows no %1 here and would pass over it.";
inline constexpr const char* kFromTooNew = "%1 is newer than the release's version %2.";
inline constexpr const char* kSameStart = "Starts from %1, as %2 does.";
inline constexpr const char* kGap = "No script leads on from version %1 to %2.";

// The tables of the reference database and their texts.
inline constexpr const char* kBecomesDictionary =
    "In the announced release %1 it is a user's table, and as a dictionary it would replace the "
    "user's rows; TakesOver=\"yes\" of its Dict says that this is meant.";
inline constexpr const char* kMoves =
    "In the announced release %1 it lies in %2, where the old file will stay.";
inline constexpr const char* kUnknownKind =
    "The description does not say what kind of table it is.";
inline constexpr const char* kMatchesNoTable =
    "\"%1\" matches no table of the reference database, or a later line matches all that it does.";
inline constexpr const char* kNotImported = "The updater could not import it: line %1: %2";
inline constexpr const char* kOtherTable = "It is the text of the table %1.";
inline constexpr const char* kCarriesRows = "It carries rows.";
inline constexpr const char* kCarriesNoRows = "It carries no rows.";

inline constexpr const char* kServerNotReached = "The server cannot be reached: %1";
inline constexpr const char* kAnotherAnnouncement = "Another announcement is being made here: %1.";

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

inline constexpr const char* kNoSecretKey = "No secret key: %1.";
inline constexpr const char* kNoPublicKey = "No public key, and no file of one: %1.";
inline constexpr const char* kWrongPassword = "Wrong password for the key %1.";
inline constexpr const char* kNoMemoryForKey = "Not enough memory to open the key %1.";
inline constexpr const char* kNoPasswordInFile = "The first line is no password: %1.";
inline constexpr const char* kNobodyToAsk =
    "No terminal to ask for the password of %1: give --password-file.";
inline constexpr const char* kEmptyPassword =
    "An empty password; --no-password makes a key without one: %1.";
inline constexpr const char* kPasswordsDiffer = "The two passwords differ: %1.";
inline constexpr const char* kThereAlready = "It exists already: %1.";
inline constexpr const char* kFileNotMade = "The file cannot be made: %1.";

// What is asked, and what a signature says of itself.
inline constexpr const char* kSigning = "tmpublish";
inline constexpr const char* kAskPassword = "Password of the key %1:";
inline constexpr const char* kAskNewPassword = "Password for the new key %1:";
inline constexpr const char* kAskAgain = "Once more:";
inline constexpr const char* kTrustedComment = "%1 %2 serial:%3 expires:%4 signed:%5";

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
