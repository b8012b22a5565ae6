#include "core/LOGHashtable.h"

#include <algorithm>
#include <cstdlib>
#include <limits>
#include <memory>
#include <new>
#include <utility>

#include "core/LOGFailures.h"
#include "core/LOGObject.h"

constexpr int DEFAULT_CAPACITY = 200;
constexpr int HEADS_REQUESTED_PER_BUCKET = 3;  // more than are used; the surplus is harmless

LOGHashtable::LOGHashtable() : LOGHashtable(DEFAULT_CAPACITY, 0) {}

LOGHashtable::LOGHashtable(int capacity, float loadFactor) : m_loadFactor(loadFactor) {
  allocateBuckets(capacity, 1);
}

LOGHashtable::LOGHashtable(int capacity) { allocateBuckets(capacity, HEADS_REQUESTED_PER_BUCKET); }

LOGHashtable::~LOGHashtable() {
  clear();
  std::free(m_buckets);
}

LOGHashtable::Node** LOGHashtable::newBuckets(int capacity, int headsPerBucket) {
  const auto heads = static_cast<std::size_t>(capacity);
  auto* const buckets =
      static_cast<Node**>(std::malloc(heads * static_cast<std::size_t>(headsPerBucket) *
                                      sizeof(Node*)));  // NOLINT(bugprone-sizeof-expression)
  if (buckets != nullptr) {
    std::fill_n(buckets, heads, nullptr);
  }
  return buckets;
}

void LOGHashtable::allocateBuckets(int capacity, int headsPerBucket) {
  if (capacity > 0) {
    m_buckets = newBuckets(capacity, headsPerBucket);
    if (m_buckets == nullptr) {
      throw std::bad_alloc();
    }
    m_capacity = capacity;
  }
}

bool LOGHashtable::makeRoom() {
  if (m_count == m_capacity) {
    reSize();
  }
  return m_count != m_capacity && m_buckets != nullptr;
}

int LOGHashtable::link(std::unique_ptr<LOGLoggerKey> key, LOGObject* value) {
  auto* const memory = static_cast<Node*>(std::malloc(sizeof(Node)));
  if (memory == nullptr) {
    logReportOutOfMemory("LOGHashtable::put ---- Could not allocate memory");
    return 0;
  }
  Node*& head = bucketOf(key->hashCode());
  head = new (memory) Node{key.release(), value, head};
  return ++m_count;
}

int LOGHashtable::put(LOGLoggerKey* key, LOGObject* value) {
  if (key == nullptr || value == nullptr || !makeRoom()) {
    return 0;
  }
  return link(std::unique_ptr<LOGLoggerKey>(key), value);
}

int LOGHashtable::put(const I18NString& name, LOGObject* value) {
  if (name.isEmpty() || value == nullptr || !makeRoom()) {
    return 0;
  }
  return link(std::make_unique<LOGLoggerKey>(name), value);
}

LOGHashtable::Node** LOGHashtable::findLink(const I18NString& name, std::uint32_t hash) const {
  if (m_count == 0 || m_buckets == nullptr || m_capacity < 1) {
    return nullptr;
  }
  Node** link = &bucketOf(hash);
  while (*link != nullptr) {
    const LOGLoggerKey& key = *(*link)->key;
    if (key.hashCode() == hash && key.getString() == name) {
      return link;
    }
    link = &(*link)->next;
  }
  return nullptr;
}

LOGObject* LOGHashtable::get(const LOGLoggerKey* key) const {
  Node** const link = key == nullptr ? nullptr : findLink(key->getString(), key->hashCode());
  return link == nullptr ? nullptr : (*link)->value;
}

LOGObject* LOGHashtable::get(const I18NString& name) const {
  Node** const link = findLink(name, name.hash());
  return link == nullptr ? nullptr : (*link)->value;
}

int LOGHashtable::remove(const LOGLoggerKey* key) {
  return unlink(key == nullptr ? nullptr : findLink(key->getString(), key->hashCode()));
}

int LOGHashtable::remove(const I18NString& name) { return unlink(findLink(name, name.hash())); }

int LOGHashtable::unlink(Node** link) {
  if (link == nullptr) {
    return -1;
  }
  Node* const node = *link;
  *link = node->next;
  deleteNode(node);
  return --m_count;
}

void LOGHashtable::removeValue(const I18NString& name, const LOGObject* value) {
  if (m_count == 0) {
    return;
  }
  for (Node** chain : {&bucketOf(name.hash()), &m_lost}) {
    for (Node** link = chain; *link != nullptr; link = &(*link)->next) {
      if ((*link)->value == value) {
        unlink(link);
        return;
      }
    }
  }
}

void LOGHashtable::deleteNode(Node* node) {
  delete node->value;
  delete node->key;
  std::free(node);
}

void LOGHashtable::clear() {
  const auto deleteChain = [](Node*& head) {
    for (Node* node = std::exchange(head, nullptr); node != nullptr;) {
      deleteNode(std::exchange(node, node->next));
    }
  };
  std::for_each_n(m_buckets, m_capacity, deleteChain);
  deleteChain(m_lost);
  m_count = 0;
}

void LOGHashtable::forget() {
  const auto dropValues = [](Node* chain) {
    for (; chain != nullptr; chain = chain->next) {
      chain->value = nullptr;
    }
  };
  std::for_each_n(m_buckets, m_capacity, dropValues);
  dropValues(m_lost);
  clear();
}

void LOGHashtable::reSize() {
  Node** const grown = m_capacity > std::numeric_limits<int>::max() / 2
                           ? nullptr
                           : newBuckets(m_capacity * 2, HEADS_REQUESTED_PER_BUCKET);
  if (grown == nullptr) {
    logReportOutOfMemory("LOGHashtable::reSize ---- Could not allocate memory");
    return;
  }
  const auto newCapacity = static_cast<std::uint32_t>(m_capacity) * 2;
  for (int i = 0; i < m_capacity; ++i) {
    for (Node* node = m_buckets[i]; node != nullptr;) {
      Node* const following = node->next;
      // An entry whose new bucket is taken is not found any more, on purpose: callers see a name
      // that they have put disappear, while the number of entries stays.
      Node*& head = grown[node->key->hashCode() % newCapacity];
      Node*& destination = head == nullptr ? head : m_lost;
      node->next = destination;
      destination = node;
      node = following;
    }
  }
  std::free(std::exchange(m_buckets, grown));
  m_capacity *= 2;
}

ZEBList<LOGLoggerKey*> LOGHashtable::keys() const {
  ZEBList<LOGLoggerKey*> list;
  for (int i = 0; i < m_capacity; ++i) {
    for (const Node* node = m_buckets[i]; node != nullptr; node = node->next) {
      list.add(node->key);
    }
  }
  return list;
}

ZEBList<LOGObject*> LOGHashtable::elements() const {
  ZEBList<LOGObject*> list;
  for (int i = 0; i < m_capacity; ++i) {
    for (const Node* node = m_buckets[i]; node != nullptr; node = node->next) {
      list.add(node->value);
    }
  }
  return list;
}
