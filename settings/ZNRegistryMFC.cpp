#include "settings/ZNRegistryMFC.h"

ZNRegistryMFC::ZNRegistryMFC(const String& section) : ZNRegistry(section.c_str(), nullptr) {}

int ZNRegistryMFC::Give(int error, String& out) const {
  if (error == kRegistryDone || error == kRegistryDefaultTooLong) out = buffer;
  return error;
}

int ZNRegistryMFC::GetErrorText(int code, String& out) {
  return Give(GetErrorText(code, buffer, sizeof buffer), out);
}

int ZNRegistryMFC::ReadKey(HKEY hive, const String& name, String& out) {
  return Give(ReadKey(hive, name.c_str(), buffer, sizeof buffer), out);
}

int ZNRegistryMFC::WriteKey(HKEY hive, const String& name, const String& value, bool keepExisting) {
  return WriteKey(hive, name.c_str(), value.c_str(), keepExisting);
}

int ZNRegistryMFC::WriteUser(const String& section, const String& key, bool value) {
  return WriteUser(section.c_str(), key.c_str(), value);
}

int ZNRegistryMFC::WriteUser(const String& section, const String& key, double value) {
  return WriteUser(section.c_str(), key.c_str(), value);
}

int ZNRegistryMFC::WriteUser(const String& section, const String& key, int value) {
  return WriteUser(section.c_str(), key.c_str(), value);
}

int ZNRegistryMFC::WriteUser(const String& section, const String& key, const String& value) {
  return WriteUser(section.c_str(), key.c_str(), value.c_str());
}

int ZNRegistryMFC::ReadUserDefault(const String& section, const String& key, bool* out,
                                   bool defaultValue) {
  return ReadUserDefault(section.c_str(), key.c_str(), out, defaultValue);
}

int ZNRegistryMFC::ReadUserDefault(const String& section, const String& key, double* out,
                                   double defaultValue) {
  return ReadUserDefault(section.c_str(), key.c_str(), out, defaultValue);
}

int ZNRegistryMFC::ReadUserDefault(const String& section, const String& key, int* out,
                                   int defaultValue) {
  return ReadUserDefault(section.c_str(), key.c_str(), out, defaultValue);
}

int ZNRegistryMFC::ReadUserDefault(const String& section, const String& key, String& out,
                                   const String& defaultValue) {
  return Give(
      ReadUserDefault(section.c_str(), key.c_str(), buffer, sizeof buffer, defaultValue.c_str()),
      out);
}

int ZNRegistryMFC::ReadUser(const String& section, const String& key, String& out) {
  return Give(ReadUser(section.c_str(), key.c_str(), buffer, sizeof buffer), out);
}

int ZNRegistryMFC::ReadUserPath(const String& section, const String& key, String& out,
                                const String& defaultValue) {
  return Give(
      ReadUserPath(section.c_str(), key.c_str(), buffer, sizeof buffer, defaultValue.c_str()), out);
}

int ZNRegistryMFC::Write(const String& section, const String& key, bool value) {
  return Write(section.c_str(), key.c_str(), value);
}

int ZNRegistryMFC::Write(const String& section, const String& key, double value) {
  return Write(section.c_str(), key.c_str(), value);
}

int ZNRegistryMFC::Write(const String& section, const String& key, int value) {
  return Write(section.c_str(), key.c_str(), value);
}

int ZNRegistryMFC::Write(const String& section, const String& key, const String& value) {
  return Write(section.c_str(), key.c_str(), value.c_str());
}

int ZNRegistryMFC::ReadDefault(const String& section, const String& key, bool* out,
                               bool defaultValue) {
  return ReadDefault(section.c_str(), key.c_str(), out, defaultValue);
}

int ZNRegistryMFC::ReadDefault(const String& section, const String& key, double* out,
                               double defaultValue) {
  return ReadDefault(section.c_str(), key.c_str(), out, defaultValue);
}

int ZNRegistryMFC::ReadDefault(const String& section, const String& key, int* out,
                               int defaultValue) {
  return ReadDefault(section.c_str(), key.c_str(), out, defaultValue);
}

int ZNRegistryMFC::ReadDefault(const String& section, const String& key, String& out,
                               const String& defaultValue) {
  return Give(
      ReadDefault(section.c_str(), key.c_str(), buffer, sizeof buffer, defaultValue.c_str()), out);
}

int ZNRegistryMFC::Read(const String& section, const String& key, String& out) {
  return Give(Read(section.c_str(), key.c_str(), buffer, sizeof buffer), out);
}

int ZNRegistryMFC::ReadPath(const String& section, const String& key, String& out,
                            const String& defaultValue) {
  return Give(ReadPath(section.c_str(), key.c_str(), buffer, sizeof buffer, defaultValue.c_str()),
              out);
}
