// The settings object for callers whose texts are the class library's strings.
#pragma once

#include <string>

#include "settings/ZNRegistry.h"

// Forwarders, in the order of their table. Texts that are read go through a buffer of 512 bytes: a
// longer one is cut there.
class FXBOX_API ZNIRegistryMFC : public virtual ZNIRegistry {
 public:
  using ZNIRegistry::GetErrorText;
  using ZNIRegistry::Read;
  using ZNIRegistry::ReadDefault;
  using ZNIRegistry::ReadKey;
  using ZNIRegistry::ReadPath;
  using ZNIRegistry::ReadUser;
  using ZNIRegistry::ReadUserDefault;
  using ZNIRegistry::ReadUserPath;
  using ZNIRegistry::Write;
  using ZNIRegistry::WriteKey;
  using ZNIRegistry::WriteUser;

  using String = std::string;

  virtual int GetErrorText(int code, String& out) = 0;
  virtual int ReadKey(HKEY hive, const String& name, String& out) = 0;
  virtual int WriteKey(HKEY hive, const String& name, const String& value, bool keepExisting) = 0;

  virtual int WriteUser(const String& section, const String& key, bool value) = 0;
  virtual int WriteUser(const String& section, const String& key, double value) = 0;
  virtual int WriteUser(const String& section, const String& key, int value) = 0;
  virtual int WriteUser(const String& section, const String& key, const String& value) = 0;
  virtual int ReadUserDefault(const String& section, const String& key, bool* out,
                              bool defaultValue) = 0;
  virtual int ReadUserDefault(const String& section, const String& key, double* out,
                              double defaultValue) = 0;
  virtual int ReadUserDefault(const String& section, const String& key, int* out,
                              int defaultValue) = 0;
  virtual int ReadUserDefault(const String& section, const String& key, String& out,
                              const String& defaultValue) = 0;
  virtual int ReadUser(const String& section, const String& key, String& out) = 0;
  virtual int ReadUserPath(const String& section, const String& key, String& out,
                           const String& defaultValue) = 0;

  virtual int Write(const String& section, const String& key, bool value) = 0;
  virtual int Write(const String& section, const String& key, double value) = 0;
  virtual int Write(const String& section, const String& key, int value) = 0;
  virtual int Write(const String& section, const String& key, const String& value) = 0;
  virtual int ReadDefault(const String& section, const String& key, bool* out,
                          bool defaultValue) = 0;
  virtual int ReadDefault(const String& section, const String& key, double* out,
                          double defaultValue) = 0;
  virtual int ReadDefault(const String& section, const String& key, int* out, int defaultValue) = 0;
  virtual int ReadDefault(const String& section, const String& key, String& out,
                          const String& defaultValue) = 0;
  virtual int Read(const String& section, const String& key, String& out) = 0;
  virtual int ReadPath(const String& section, const String& key, String& out,
                       const String& defaultValue) = 0;
};

class FXBOX_API ZNRegistryMFC : public ZNRegistry, public virtual ZNIRegistryMFC {
 public:
  using ZNRegistry::GetErrorText;
  using ZNRegistry::Read;
  using ZNRegistry::ReadDefault;
  using ZNRegistry::ReadKey;
  using ZNRegistry::ReadPath;
  using ZNRegistry::ReadUser;
  using ZNRegistry::ReadUserDefault;
  using ZNRegistry::ReadUserPath;
  using ZNRegistry::Write;
  using ZNRegistry::WriteKey;
  using ZNRegistry::WriteUser;

  ZNRegistryMFC() = default;
  // As ZNRegistry::InitFromInf, without an extra.
  explicit ZNRegistryMFC(const String& section);

  int GetErrorText(int code, String& out) override;
  int ReadKey(HKEY hive, const String& name, String& out) override;
  int WriteKey(HKEY hive, const String& name, const String& value, bool keepExisting) override;

  int WriteUser(const String& section, const String& key, bool value) override;
  int WriteUser(const String& section, const String& key, double value) override;
  int WriteUser(const String& section, const String& key, int value) override;
  int WriteUser(const String& section, const String& key, const String& value) override;
  int ReadUserDefault(const String& section, const String& key, bool* out,
                      bool defaultValue) override;
  int ReadUserDefault(const String& section, const String& key, double* out,
                      double defaultValue) override;
  int ReadUserDefault(const String& section, const String& key, int* out,
                      int defaultValue) override;
  int ReadUserDefault(const String& section, const String& key, String& out,
                      const String& defaultValue) override;
  int ReadUser(const String& section, const String& key, String& out) override;
  int ReadUserPath(const String& section, const String& key, String& out,
                   const String& defaultValue) override;

  int Write(const String& section, const String& key, bool value) override;
  int Write(const String& section, const String& key, double value) override;
  int Write(const String& section, const String& key, int value) override;
  int Write(const String& section, const String& key, const String& value) override;
  int ReadDefault(const String& section, const String& key, bool* out, bool defaultValue) override;
  int ReadDefault(const String& section, const String& key, double* out,
                  double defaultValue) override;
  int ReadDefault(const String& section, const String& key, int* out, int defaultValue) override;
  int ReadDefault(const String& section, const String& key, String& out,
                  const String& defaultValue) override;
  int Read(const String& section, const String& key, String& out) override;
  int ReadPath(const String& section, const String& key, String& out,
               const String& defaultValue) override;

  // A literal would sooner become a bool than a string.
  int Write(const String& section, const String& key, const char* value) {
    return Write(section.c_str(), key.c_str(), value);
  }
  int WriteUser(const String& section, const String& key, const char* value) {
    return WriteUser(section.c_str(), key.c_str(), value);
  }

 private:
  // What is in the buffer, unless the reading failed.
  int Give(int error, String& out) const;

  char buffer[512] = "";
};
