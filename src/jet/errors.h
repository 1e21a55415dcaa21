#pragma once

#include <cstdint>
#include <string_view>

#include "ports/database_types.h"

// The engine's numbered errors. The numbers are those of DAO 3.6, so that callers handle both
// engines alike; the texts are Russian.
namespace jet {

enum ErrorNumber : std::int32_t {
  kInvalidCall = 5,
  kOverflow = 6,
  kDivisionByZero = 11,
  kTextTooLong = 14,
  kInvalidUseOfNull = 94,
  kReserved = 3000,
  kInvalidArgument = 3001,
  kTooManyTransactions = 3003,
  kTableExists = 3010,
  kObjectExists = 3012,
  kNotAnIndex = 3015,
  kNoEditOrAddNew = 3020,
  kNoCurrentRecord = 3021,
  kDuplicateValue = 3022,
  kFileNotFound = 3024,
  kDiskFull = 3026,
  kReadOnly = 3027,
  kInvalidPassword = 3031,
  kNoTransaction = 3034,
  kDiskError = 3043,
  kFileInUse = 3045,
  kRecordTooLong = 3047,
  kDatabaseDamaged = 3049,
  kNoPermission = 3051,
  kNullInIndex = 3058,
  kCancelled = 3059,
  kTooFewParameters = 3061,
  kNotAnActionQuery = 3065,
  kNoInput = 3067,
  kNotUpdatable = 3073,
  kSyntaxInExpression = 3075,
  kInputTableNotFound = 3078,
  kAmbiguousField = 3079,
  kTableJoinedTwice = 3081,
  kFieldOutsideJoin = 3082,
  kUndefinedFunction = 3085,
  kCannotDelete = 3086,
  kWrongArgumentCount = 3087,
  kOrderAgainstDistinct = 3093,
  kNoAggregateHere = 3096,
  kCircularAlias = 3103,
  kJoinOnLongField = 3118,
  kStarInGroups = 3121,
  kNotInAggregate = 3122,
  kInvalidName = 3125,
  kInvalidBracketing = 3126,
  kUnknownInsertField = 3127,
  kInvalidStatement = 3129,
  kSyntaxInFrom = 3131,
  kSyntaxInInsert = 3134,
  kSyntaxInJoin = 3135,
  kSyntaxInOrderBy = 3138,
  kSyntaxInSelect = 3141,
  kTextAfterStatement = 3142,
  kSyntaxInUpdate = 3144,
  kSyntaxInDelete = 3128,
  kFieldTooSmall = 3163,
  kFieldNotUpdatable = 3164,
  kRecordDeleted = 3167,
  kDatabaseTooLarge = 3183,
  kTooManyFields = 3190,
  kFieldDefinedTwice = 3191,
  kRelatedRecords = 3200,
  kNoRelatedRecord = 3201,
  kDatabaseExists = 3204,
  kLockedByOther = 3218,
  kInvalidOperation = 3219,
  kNotSupported = 3251,
  kInvalidFieldType = 3259,
  kNoFieldsDefined = 3264,
  kItemNotFound = 3265,
  kTooManyIndexFields = 3277,
  kFieldNeededByIndex = 3280,
  kUsedInRelation = 3281,
  kPrimaryKeyExists = 3283,
  kIndexExists = 3284,
  kSyntaxInCreateTable = 3290,
  kSyntaxInCreateIndex = 3291,
  kSyntaxInFieldDefinition = 3292,
  kSyntaxInAlterTable = 3293,
  kSyntaxInDrop = 3295,
  kFieldInRelation = 3303,
  kManyFieldsInSubquery = 3306,
  kUnionCountDiffers = 3307,
  kRequiredField = 3314,
  kZeroLength = 3315,
  kUnknownFormat = 3343,
  kValueCountDiffers = 3346,
  kOrderNotSelected = 3351,
  kManyRowsInSubquery = 3354,
  kOpenedExclusively = 3356,
  kTooComplex = 3360,
  kRelationWithoutFields = 3366,
  kRelationExists = 3367,
  kRelationFieldsDiffer = 3368,
  kConstraintNotFound = 3371,
  kNoSuchIndex = 3372,
  kTableNotFound = 3376,
  kFieldExists = 3380,
  kFieldNotFound = 3381,
  kInvalidIndexField = 3409,
  kObjectClosed = 3420,
  kConversion = 3421,
  kTypeMismatch = 3464,
  kNoUniqueReference = 3609,
  kTooManyIndexes = 3626,
};

// The error of that number with the arguments filled into its text.
ports::DatabaseError MakeError(std::int32_t number, std::string_view first = {},
                               std::string_view second = {});

[[noreturn]] void Fail(std::int32_t number, std::string_view first = {},
                       std::string_view second = {});

// Fails for a statement or clause, given by name ("TRANSFORM"), that this engine does not support.
[[noreturn]] void FailUnsupported(std::string_view what);

// The beginning of a long text, cut between characters, to be quoted in an error.
std::string_view Excerpt(std::string_view text);

}  // namespace jet
