#pragma once
// The comparison engine: private operations of the control that turn the table lists, field
// structures and records of two database sides into classified difference rows. They work only
// through the public operations of clsDBManager and clsResultSet and keep no state of their own
// (but for the per-thread data progress of DataProgress.h).
//
// The ...Reference routines follow the algorithms exactly as the control has always run them:
// nested scans over the result rows. The routines without the suffix give the same rows, change
// types, events and messages through one index of the other side (docs/performance.md).
#include <cstdint>
#include <string>

namespace varsentix {
class clsDBManager;
class Varsenti;
}  // namespace varsentix

namespace varsentix::engine {

// --- Table list comparison ---
// Connects the side, reads its table list and appends a table row (and, unless the side lists
// objects only, the table's field rows) for every table kept. #19 on failure.
void openAllTableStructures(clsDBManager& manager);
// Appends the row of the side's current table (and its field rows); skips "ACCESS TABLE" and
// "SYSTEM TABLE", and anything but "TABLE" unless the side shows views. No handler.
clsDBManager& addTableToResults(clsDBManager& manager);
// Classifies every row of A against B: "0" when B has a row with the same object name (then the
// field pass runs), "1" otherwise. Progress goes to the control at row 51 and every 50 rows
// after it. #10 on failure.
clsDBManager& compareResultStructure(clsDBManager& A, clsDBManager& B, Varsenti& control,
                                     const std::string& readingFrom);
// The same classification as the literal nested scans (rows of A times rows of B, a field pass
// per match): the reference compareResultStructure is checked against.
clsDBManager& compareResultStructureReference(clsDBManager& A, clsDBManager& B, Varsenti& control,
                                              const std::string& readingFrom);
// Removes every row whose change type is "0". No handler.
void removeUnchangedResults(clsDBManager& manager);

// --- Field structure comparison ---
// Appends one row per column of the side's current table (restricted to its field list when
// set) and one trailing row with an empty field name. #11 on failure.
clsDBManager& addTableFieldsToResults(clsDBManager& manager);
// Connects the side and appends its current table's row and field rows. #17 on failure.
void openTableStructure(clsDBManager& manager);
// Appends the field rows of the side's current table for its field list. #18 on failure.
void openTableStructureFromFieldList(clsDBManager& manager);
// Classifies A's rows from i0 on against B's rows from j0 on: "2" new field, "0" same, then the
// data-type test. #9 on failure.
clsDBManager& CompareFieldStructure(clsDBManager& A, clsDBManager& B, int32_t i0, int32_t j0);
// The literal nested scan of the field pass: the reference CompareFieldStructure is checked against.
clsDBManager& CompareFieldStructureReference(clsDBManager& A, clsDBManager& B, int32_t i0, int32_t j0);
// Row i of A becomes "0" when its data type text equals that of row j of B, "3" otherwise.
clsDBManager& compareResultDataTypes(clsDBManager& A, clsDBManager& B, int32_t i, int32_t j);

// --- Record matching and value comparison ---
// "select " + field list + " from [" + table + "]".
std::string buildSelectStatement(clsDBManager& manager);
// Opens the same query on both sides, ordered by the first comparable field, and reports every
// record of A that B does not have. #16 on failure.
void compareTableRecords(clsDBManager& A, clsDBManager& B);
// compareTableRecords(A, B), then compareTableRecords(B, A): the same outcome, the second walk
// deciding most of B's records from what the first one saw of them.
void compareTableRecordsBothWays(clsDBManager& A, clsDBManager& B);
// Looks for A's current record on B and, when B has none, appends one "5" row per column. #12.
clsDBManager& compareRecordValues(clsDBManager& A, clsDBManager& B, int16_t columnCount);
// Appends the value row of column k of A's current record. Each step that fails is passed over.
clsDBManager& addRecordValueToResults(clsDBManager& A, int16_t changeType, int16_t k,
                                      int16_t columnCount);
// Empties A's results and compares every record of A, counting data progress. #14 on failure.
void compareBufferedRecords(clsDBManager& A, clsDBManager& B, Varsenti& control,
                            const std::string& readingFrom);
// compareBufferedRecords(A, B, control, readingA), then compareBufferedRecords(B, A, control,
// readingB): the same outcome and events, the second walk deciding most of B's records from what
// the first one saw of them.
void compareBufferedRecordsBothWays(clsDBManager& A, clsDBManager& B, Varsenti& control,
                                    const std::string& readingA, const std::string& readingB);
// As compareBufferedRecords for the steps s to s + n (n + 1 steps) from A's first record.
void compareRecordWindow(clsDBManager& A, clsDBManager& B, Varsenti& control,
                         const std::string& readingFrom, int32_t s, int32_t n);
// Opens the side's statement and saves its records to its XML file. Failures are ignored.
void saveTableRecordsToXML(clsDBManager& manager);

}  // namespace varsentix::engine
