// The settings of a product: a few facts in the registry, everything else in the file Sennet.ini.
#pragma once

#include <wtypes.h>  // ahead of winreg.h, which needs it

#include <winreg.h>

#include <string>

#include "base/IKvObject.h"
#include "base/KvString.h"

// Results of all operations. GetErrorText has a German text for each but the last two.
enum ZNRegistryError : int {
  kRegistryDone = 0,
  kRegistryBufferTooSmall = -1,  // for a value of the registry
  kRegistryKeyUnreadable = -2,
  kRegistryKeyMissing = -3,
  kRegistryKeyUnwritable = -4,
  kRegistryKeyNotMade = -5,
  kRegistryWrongArguments = -6,
  kRegistryIniUnwritable = -7,
  kRegistryIniUnreadable = -8,  // the file, the section or the key; an empty value too
  kRegistryPathTooLong = -9,    // for the buffer
  kRegistryNotInitialised = -10,
  kRegistryNoConversion = -11,
  kRegistryDefaultTooLong = -12,
  kRegistryKeyKept = -13,  // a warning: the key is there and was to be kept
  kRegistryIniMissing = -14,
  kRegistryIniClosed = -15,  // the file is there and cannot be opened
};

// The operations, in the order of their table.
//
// Names in the registry are keys below Software\Company\Product\Version, and their values are the
// keys' default values. Sections in the file are written Prefix_#_Section, those of a user
// Prefix_#_User0001_#_Section.
//
// An operation with `buffer, size` writes at most size characters with the closing zero; one with
// an out parameter leaves it alone on failure. The Default operations store the default instead and
// give 0. The Path operations add the folder separator where it is missing.
//
// Every operation gives 0 or one of the codes above: kRegistryNotInitialised before Init has given
// 0, kRegistryWrongArguments for a text or result that is null, and for a buffer without room.
class FXBOX_API ZNIRegistry : public virtual IKvObject {
 public:
  // Says who the product is. The first three words are the path of its keys; one at least is given.
  // `shortId` stands in its section names, unless `extra` gives another prefix.
  virtual int Init(const char* company, const char* product, const char* version,
                   const char* shortId, const char* extra) = 0;
  // The same, read from a section of the file Tesmar.inf.
  virtual int InitFromInf(const char* section, const char* extra) = 0;
  // A German sentence for any code, unknown ones among them. Works before Init.
  virtual int GetErrorText(int code, KvString& out) = 0;
  virtual int GetErrorText(int code, char* buffer, int size) = 0;
  // Writes what the system keeps of the file in memory.
  virtual int FlushIniFile() = 0;

  // --- The registry, below one of its roots.

  // A key's value, as text; kRegistryKeyMissing where there is no such key.
  virtual int ReadKey(HKEY hive, const char* name, KvString& out) = 0;
  virtual int ReadKey(HKEY hive, const char* name, char* buffer, int size) = 0;
  // Makes the key, which every user may then write, and stores the value. With `keepExisting` a key
  // that is there stays as it is, and the answer is kRegistryKeyKept.
  virtual int WriteKey(HKEY hive, const char* name, const char* value, bool keepExisting) = 0;
  // A list is a run of keys key\name_0000, key\name_0001 and so on; it ends at the first that is
  // missing.
  virtual int ReadListItem(HKEY hive, const char* key, const char* name, int index,
                           KvString& out) = 0;
  virtual int ReadListItem(HKEY hive, const char* key, const char* name, int index, char* buffer,
                           int size) = 0;
  // At the end of the list; a value that it has already is not added again.
  virtual int AddListItem(HKEY hive, const char* key, const char* name, const char* value) = 0;
  // The first item with this value; those behind it move up. None is no failure.
  virtual int RemoveListItem(HKEY hive, const char* key, const char* name, const char* value) = 0;
  // The folder of the file, stored for the whole machine, and whether there is one (1) or not (0).
  virtual int SetIniFilePath(const char* path) = 0;
  virtual int HasIniFilePath(int* out) = 0;
  // Deletes all keys of the product. The file stays.
  virtual int DeleteAll() = 0;

  // --- The file, in the sections of the current user, who gets a number at the first use.

  virtual int WriteUser(const char* section, const char* key, bool value) = 0;
  virtual int WriteUser(const char* section, const char* key, double value) = 0;
  virtual int WriteUser(const char* section, const char* key, int value) = 0;
  virtual int WriteUser(const char* section, const char* key, const char* value) = 0;
  // What is missing, empty or cannot be read gives the default.
  virtual int ReadUserDefault(const char* section, const char* key, bool* out,
                              bool defaultValue) = 0;
  virtual int ReadUserDefault(const char* section, const char* key, double* out,
                              double defaultValue) = 0;
  virtual int ReadUserDefault(const char* section, const char* key, int* out, int defaultValue) = 0;
  virtual int ReadUserDefault(const char* section, const char* key, KvString& out,
                              const char* defaultValue) = 0;
  virtual int ReadUserDefault(const char* section, const char* key, char* buffer, int size,
                              const char* defaultValue) = 0;
  // kRegistryIniUnreadable for a value that is missing or empty; kRegistryNoConversion for one that
  // is not of the kind asked for.
  virtual int ReadUser(const char* section, const char* key, bool* out) = 0;
  virtual int ReadUser(const char* section, const char* key, double* out) = 0;
  virtual int ReadUser(const char* section, const char* key, int* out) = 0;
  virtual int ReadUser(const char* section, const char* key, KvString& out) = 0;
  virtual int ReadUser(const char* section, const char* key, char* buffer, int size) = 0;
  // A folder, with a separator at its end; kRegistryPathTooLong when that does not fit.
  virtual int ReadUserPath(const char* section, const char* key, KvString& out,
                           const char* defaultValue) = 0;
  virtual int ReadUserPath(const char* section, const char* key, char* buffer, int size,
                           const char* defaultValue) = 0;
  virtual int ReadUserPath(const char* section, const char* key, KvString& out) = 0;
  virtual int ReadUserPath(const char* section, const char* key, char* buffer, int size) = 0;

  // --- The file, in sections for all users. Otherwise as above.

  // Flags are written "true" and "false", numbers with a decimal point and six places after it. A
  // text must fit one line.
  virtual int Write(const char* section, const char* key, bool value) = 0;
  virtual int Write(const char* section, const char* key, double value) = 0;
  virtual int Write(const char* section, const char* key, int value) = 0;
  virtual int Write(const char* section, const char* key, const char* value) = 0;
  virtual int ReadDefault(const char* section, const char* key, bool* out, bool defaultValue) = 0;
  virtual int ReadDefault(const char* section, const char* key, double* out,
                          double defaultValue) = 0;
  virtual int ReadDefault(const char* section, const char* key, int* out, int defaultValue) = 0;
  virtual int ReadDefault(const char* section, const char* key, KvString& out,
                          const char* defaultValue) = 0;
  virtual int ReadDefault(const char* section, const char* key, char* buffer, int size,
                          const char* defaultValue) = 0;
  virtual int Read(const char* section, const char* key, bool* out) = 0;
  virtual int Read(const char* section, const char* key, double* out) = 0;
  virtual int Read(const char* section, const char* key, int* out) = 0;
  // Asks the file alone.
  virtual int Read(const char* section, const char* key, KvString& out) = 0;
  // Brings a lost file back from its backup "Sennet.ini.bak", and makes the backup where there is
  // none.
  virtual int Read(const char* section, const char* key, char* buffer, int size) = 0;
  virtual int ReadPath(const char* section, const char* key, KvString& out,
                       const char* defaultValue) = 0;
  virtual int ReadPath(const char* section, const char* key, char* buffer, int size,
                       const char* defaultValue) = 0;
  virtual int ReadPath(const char* section, const char* key, KvString& out) = 0;
  virtual int ReadPath(const char* section, const char* key, char* buffer, int size) = 0;
};

// The settings object. It belongs to one thread; other objects and other processes may work on the
// same settings at the same time. Nothing is thrown. The operations do what ZNIRegistry says of
// them; what is told below is what this class adds. Texts that go in are read during the call
// alone, texts that come out are copies.
class FXBOX_API ZNRegistry : public virtual ZNIRegistry {
 public:
  ZNRegistry() = default;
  // As InitFromInf and Init; whether they succeeded shows in every later result.
  ZNRegistry(const char* section, const char* extra);
  ZNRegistry(const char* company, const char* product, const char* version, const char* id,
             const char* extra);

  // Says who the product is: at least one of the three words and the short id. `extra` is the
  // prefix of the sections, by default the short id, or, with ".ini" in it, the file to be used.
  int Init(const char* company, const char* product, const char* version, const char* id,
           const char* extra) override;
  // Takes that from a section of the file Tesmar.inf beside the program or in the current folder.
  int InitFromInf(const char* section, const char* extra) override;
  int GetErrorText(int code, KvString& out) override;
  int GetErrorText(int code, char* buffer, int size) override;
  int FlushIniFile() override;

  // --- The registry.

  int ReadKey(HKEY hive, const char* name, KvString& out) override;
  int ReadKey(HKEY hive, const char* name, char* buffer, int size) override;
  int WriteKey(HKEY hive, const char* name, const char* value, bool keepExisting) override;
  int ReadListItem(HKEY hive, const char* key, const char* name, int index, KvString& out) override;
  int ReadListItem(HKEY hive, const char* key, const char* name, int index, char* buffer,
                   int size) override;
  int AddListItem(HKEY hive, const char* key, const char* name, const char* value) override;
  int RemoveListItem(HKEY hive, const char* key, const char* name, const char* value) override;
  int SetIniFilePath(const char* path) override;
  int HasIniFilePath(int* out) override;
  // Deletes everything that the product has in the registry, for the machine and for all users.
  int DeleteAll() override;

  // --- The file, for the current user.

  int WriteUser(const char* section, const char* key, bool value) override;
  int WriteUser(const char* section, const char* key, double value) override;
  int WriteUser(const char* section, const char* key, int value) override;
  int WriteUser(const char* section, const char* key, const char* value) override;
  int ReadUserDefault(const char* section, const char* key, bool* out, bool defaultValue) override;
  int ReadUserDefault(const char* section, const char* key, double* out,
                      double defaultValue) override;
  int ReadUserDefault(const char* section, const char* key, int* out, int defaultValue) override;
  int ReadUserDefault(const char* section, const char* key, KvString& out,
                      const char* defaultValue) override;
  int ReadUserDefault(const char* section, const char* key, char* buffer, int size,
                      const char* defaultValue) override;
  int ReadUser(const char* section, const char* key, bool* out) override;
  int ReadUser(const char* section, const char* key, double* out) override;
  int ReadUser(const char* section, const char* key, int* out) override;
  int ReadUser(const char* section, const char* key, KvString& out) override;
  int ReadUser(const char* section, const char* key, char* buffer, int size) override;
  int ReadUserPath(const char* section, const char* key, KvString& out,
                   const char* defaultValue) override;
  int ReadUserPath(const char* section, const char* key, char* buffer, int size,
                   const char* defaultValue) override;
  int ReadUserPath(const char* section, const char* key, KvString& out) override;
  int ReadUserPath(const char* section, const char* key, char* buffer, int size) override;

  // --- The file, for all users.

  int Write(const char* section, const char* key, bool value) override;
  int Write(const char* section, const char* key, double value) override;
  int Write(const char* section, const char* key, int value) override;
  int Write(const char* section, const char* key, const char* value) override;
  int ReadDefault(const char* section, const char* key, bool* out, bool defaultValue) override;
  int ReadDefault(const char* section, const char* key, double* out, double defaultValue) override;
  int ReadDefault(const char* section, const char* key, int* out, int defaultValue) override;
  int ReadDefault(const char* section, const char* key, KvString& out,
                  const char* defaultValue) override;
  int ReadDefault(const char* section, const char* key, char* buffer, int size,
                  const char* defaultValue) override;
  int Read(const char* section, const char* key, bool* out) override;
  int Read(const char* section, const char* key, double* out) override;
  int Read(const char* section, const char* key, int* out) override;
  int Read(const char* section, const char* key, KvString& out) override;
  int Read(const char* section, const char* key, char* buffer, int size) override;
  int ReadPath(const char* section, const char* key, KvString& out,
               const char* defaultValue) override;
  int ReadPath(const char* section, const char* key, char* buffer, int size,
               const char* defaultValue) override;
  int ReadPath(const char* section, const char* key, KvString& out) override;
  int ReadPath(const char* section, const char* key, char* buffer, int size) override;

  // --- Beyond the interface.

  // Copies the file to its backup; what goes wrong stays unsaid.
  void CreateIniBackup();
  // The folder of the file by the registry, else the program's; with a separator at the end.
  int GetIniPath(KvString& out);
  int GetIniPath(char* buffer, int size);
  // The file's full name, which the object keeps from the first time on.
  int GetIniPathAndName(char* buffer, int size);
  // False, and all texts empty, before Init.
  bool GetRegistryInfo(KvString& company, KvString& product, KvString& version, KvString& id);
  // A security descriptor that lets everybody do everything; the caller frees it with LocalFree.
  // Null on a system without such things, or when it cannot be had.
  void* GetSecurityDescriptorWithNullDacl();

 private:
  int Enter(const char* section, const char* key);
  int FindIni(std::size_t size);
  std::string IniFolder();
  std::string FullSection(const char* section) const;
  std::string RegistryKey(const char* name) const;

  std::string keyParts[3];  // company, product, version
  std::string shortId;
  std::string sectionPrefix;  // before the file is known it may hold the file's name
  std::string iniPath;        // empty before it is known
  std::string keyPath;        // the parts that are not empty, each with a backslash behind it
  int initialised = 0;
};
