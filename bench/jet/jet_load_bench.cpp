// Opens each Access sample file through the record-set layer (libmdb -> in-memory SQLite) a few
// times and prints the fastest and median open time, the rows loaded and the peak RSS.
//   varsentix_jet_load_bench [runs] [file...]
#include <sys/resource.h>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <vector>

#include "varsentix/platform/ado/Connection.h"
#include "varsentix/platform/ado/Recordset.h"
#include "varsentix/platform/vb/VBError.h"

using namespace varsentix;

namespace {

std::string dataDir() {
  const char* overridden = std::getenv("VARSENTIX_SHARED_DATA");
  return overridden ? overridden : VARSENTIX_SHARED_DATA_DIR;
}

long peakRssKiB() {
  rusage usage{};
  getrusage(RUSAGE_SELF, &usage);
  return usage.ru_maxrss;
}

int64_t rowsIn(const vb::Ref<ado::Connection>& connection) {
  int64_t rows = 0;
  auto tables = connection->OpenSchema(ado::adSchemaTables);
  while (!tables->isEOF()) {
    auto count = vb::Ref<ado::Recordset>::make();
    count->Open("SELECT count(*) FROM [" + tables->field("TABLE_NAME").Value().toText() + "]",
                connection, ado::adOpenForwardOnly, ado::adLockReadOnly, ado::adCmdText);
    rows += count->field(0).Value().toInt64();
    tables->MoveNext();
  }
  return rows;
}

void bench(const std::string& path, int runs) {
  std::vector<double> millis;
  int64_t rows = 0;
  for (int i = 0; i < runs; ++i) {
    auto connection = vb::Ref<ado::Connection>::make();
    auto start = std::chrono::steady_clock::now();
    connection->Open("Provider=Microsoft.Jet.OLEDB.4.0;Data Source=" + path);
    millis.push_back(std::chrono::duration<double, std::milli>(std::chrono::steady_clock::now() - start).count());
    if (i == 0) rows = rowsIn(connection);
  }
  std::sort(millis.begin(), millis.end());
  std::printf("%-28s open: fastest %7.1f ms, median %7.1f ms (%d runs); %lld rows in all tables\n",
              path.substr(path.find_last_of('/') + 1).c_str(), millis.front(), millis[millis.size() / 2],
              runs, static_cast<long long>(rows));
}

}  // namespace

int main(int argc, char** argv) {
  int runs = argc > 1 ? std::max(1, std::atoi(argv[1])) : 5;
  std::vector<std::string> files;
  for (int i = 2; i < argc; ++i) files.push_back(argv[i]);
  if (files.empty())
    for (const char* name : {"nwind.mdb", "DateTestDatabase.mdb", "ASampleDatabase.accdb"})
      files.push_back(dataDir() + "/" + name);
  try {
    for (const auto& file : files) bench(file, runs);
  } catch (const vb::VBError& e) {
    std::fprintf(stderr, "error %d: %s\n", e.number(), e.description().c_str());
    return 1;
  }
  std::printf("peak RSS %ld KiB\n", peakRssKiB());
  return 0;
}
