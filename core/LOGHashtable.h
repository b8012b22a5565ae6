#ifndef CORE_LOGHASHTABLE_H
#define CORE_LOGHASHTABLE_H

#include <memory>

#include "core/LOGLoggerKey.h"
#include "core/LOGMutex.h"
#include "platform/ZEBList.h"

class LOGObject;

/// A chained hash table from names to objects, which owns both. It carries a lock for its users;
/// the operations themselves take none, so callers serialise access.
///
/// Deliberate: a put never looks for an older entry of the same name; it shadows it. When the table
/// is full it doubles its buckets, and of the entries that meet in one new bucket only the first is
/// found from then on. What is no longer found is still freed with the table.
class LOG4ZEB_EXPORT LOGHashtable : public LOGMutex {
 public:
  /// 200 buckets. Each constructor throws std::bad_alloc.
  LOGHashtable();
  /// The load factor is stored and never consulted. A capacity below 1 gives a table without
  /// buckets, which takes nothing.
  LOGHashtable(int capacity, float loadFactor);
  explicit LOGHashtable(int capacity);
  LOGHashtable(const LOGHashtable&) = delete;
  LOGHashtable& operator=(const LOGHashtable&) = delete;
  /// Deletes every key and value.
  ~LOGHashtable() override;

  /// Takes ownership of both and returns the new number of entries. Returns 0, and takes nothing,
  /// when either is null or there is no room; without memory for the entry the key is deleted.
  int put(LOGLoggerKey* key, LOGObject* value);
  /// The same under a key of its own; 0 for an empty name. Throws std::bad_alloc, and takes
  /// nothing, without memory for the key.
  int put(const I18NString& name, LOGObject* value);
  /// The newest value of that name, or null.
  LOGObject* get(const LOGLoggerKey* key) const;
  LOGObject* get(const I18NString& name) const;
  /// 1 or 0.
  int containsKey(const LOGLoggerKey* key) const { return get(key) != nullptr ? 1 : 0; }
  int contains(const I18NString& name) const { return get(name) != nullptr ? 1 : 0; }
  /// Deletes the newest entry of that name and returns how many entries are left, -1 if there was
  /// none.
  int remove(const LOGLoggerKey* key);
  int remove(const I18NString& name);
  /// Deletes the entry of `value`, which was put under that name, also where the others do not find
  /// it; does nothing if there is none.
  void removeValue(const I18NString& name, const LOGObject* value);
  /// The number of entries, those that a growth lost included.
  int size() const noexcept { return m_count; }
  /// The number of buckets.
  int capacity() const noexcept { return m_capacity; }
  void clear();
  /// Empties the table and leaves the values to the caller.
  void forget();
  /// Doubles the number of buckets.
  void reSize();
  /// The keys, or the values, bucket by bucket.
  ZEBList<LOGLoggerKey*> keys() const;
  ZEBList<LOGObject*> elements() const;

 private:
  struct Node {
    LOGLoggerKey* key;
    LOGObject* value;
    Node* next;
  };

  bool makeRoom();
  int link(std::unique_ptr<LOGLoggerKey> key, LOGObject* value);
  Node*& bucketOf(std::uint32_t hash) const {
    return m_buckets[hash % static_cast<std::uint32_t>(m_capacity)];
  }
  Node** findLink(const I18NString& name, std::uint32_t hash) const;
  /// Deletes the entry at `link`; the result is that of remove().
  int unlink(Node** link);
  void allocateBuckets(int capacity, int headsPerBucket);
  static Node** newBuckets(int capacity, int headsPerBucket);
  static void deleteNode(Node* node);

  int m_count = 0;
  int m_capacity = 0;
  [[maybe_unused]] float m_loadFactor = 0;
  Node** m_buckets = nullptr;
  Node* m_lost = nullptr;  // entries that a growth left without a bucket
};

#endif
