// Short forms for what the tests of storages do again and again.
#pragma once

#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <vector>

#include "base/KvInterfaces.h"
#include "settings/TraceLogStd.h"
#include "storage/CheckedStream.h"
#include "tests/platform/Support.h"

namespace test {

using testing_support::ReadFile;
using testing_support::TemporaryFolder;
using testing_support::WriteFile;

struct CloseStorage {
  void operator()(IKvStorage* storage) const { storage->Close(); }
};
using StoragePtr = std::unique_ptr<IKvStorage, CloseStorage>;

// Makes or replaces a stream.
inline void Put(IKvStorage& storage, const char* name, const std::string& bytes) {
  IKvStream* stream = storage.CreateStream(name, OpenModeRewrite);
  ASSERT_NE(stream, nullptr) << name;
  const auto count = static_cast<unsigned>(bytes.size());
  EXPECT_EQ(stream->Write(bytes.data(), count), count);
  EXPECT_TRUE(CloseChecked(stream));
}

inline std::string ReadAll(IKvStorage& storage, const char* name) {
  IKvStream* stream = storage.OpenStream(name, OpenModeRead);
  if (!stream) return "(no stream)";
  std::string bytes(stream->GetLength(), '\0');
  bytes.resize(stream->Read(bytes.data(), static_cast<unsigned>(bytes.size())));
  stream->Close();
  return bytes;
}

// The log while a test runs, down to its finest lines.
class LogOfTest {
 public:
  LogOfTest() {
    StartLogging(nullptr, false, false, folder.Path().string().c_str());
    TraceLog::SetLogLevel(6);
    Lines();
  }
  ~LogOfTest() { TraceLog::StopLogging(true); }

  // Those since the last call, without the time, each with "; " behind it.
  std::string Lines() {
    const std::string text = ReadFile(TraceLog::GetLogFileName());
    std::string lines;
    for (std::size_t end; (end = text.find("\r\n", seen)) != text.npos; seen = end + 2) {
      const std::string line = text.substr(seen, end - seen);
      lines += line.substr(line.find('\t') + 1) + "; ";
    }
    return lines;
  }

 private:
  TemporaryFolder folder;
  std::size_t seen = 0;
};

// Of all elements in the order in which they come; storages end in "/".
inline std::vector<std::string> Names(IKvStorage& storage, const char* pattern = "") {
  std::vector<std::string> names;
  KvString name(pattern);
  unsigned attributes = 0;
  for (bool any = storage.FindFirst(name, attributes); any;
       any = storage.FindNext(name, attributes)) {
    names.push_back(name.ToStdString() + (attributes == kStorageElement ? "/" : ""));
  }
  return names;
}

}  // namespace test
