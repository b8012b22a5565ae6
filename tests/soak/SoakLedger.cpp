#include "soak/SoakLedger.h"

#include "soak/SoakLine.h"
#include "support/Workplace.h"

namespace fs = std::filesystem;

namespace {

constexpr std::size_t MOST_COMPLAINTS = 8;

}  // namespace

SoakLedger::SoakLedger(std::string name, const std::vector<long>& sent)
    : m_name(std::move(name)), m_latest(sent.size(), -1) {
  for (const long count : sent) {
    m_seen.emplace_back(static_cast<std::size_t>(count), false);
  }
}

void SoakLedger::complain(const std::string& what) {
  if (m_complaints.size() < MOST_COMPLAINTS) {
    m_complaints.push_back(m_name + ": " + what);
  }
}

void SoakLedger::add(std::string_view record) {
  const auto line = SoakLine::in(record);
  const auto source = static_cast<std::size_t>(line ? line->source : 0);
  const auto number = static_cast<std::size_t>(line ? line->number : 0);
  if (!line || source >= m_seen.size() || number >= m_seen[source].size()) {
    complain("not one whole message: [" + std::string(record.substr(0, 300)) + "]");
  } else if (m_seen[source][number]) {
    complain("twice: " + line->text());
  } else {
    m_seen[source][number] = true;
    ++m_count;
    if (line->number < m_latest[source]) {
      m_unordered.insert(line->source);
    }
    m_latest[source] = line->number;
  }
}

void SoakLedger::addFile(const fs::path& file, std::string_view begin, std::string_view end) {
  const std::string text = Workplace::read(file.string());
  const std::string_view all = text;
  for (std::size_t at = 0; at < all.size();) {
    std::size_t next = begin.empty() ? all.find(end, at) : all.find(begin, at + 1);
    next = next == all.npos ? all.size() : next + (begin.empty() ? end.size() : 0);
    const std::string_view record = all.substr(at, next - at);
    const bool isWhole = record.size() >= begin.size() + end.size() &&
                         record.substr(0, begin.size()) == begin &&
                         record.substr(record.size() - end.size()) == end;
    if (isWhole) {
      add(record);
    } else {
      complain(file.string() + " at byte " + std::to_string(at) + ": torn: [" +
               std::string(record.substr(0, 300)) + "]");
    }
    at = next;
  }
}

long SoakLedger::addFiles(const std::string& directory, const std::string& name,
                          std::string_view begin, std::string_view end) {
  long files = 0;
  for (const fs::directory_entry& entry : fs::recursive_directory_iterator(directory)) {
    if (entry.is_regular_file() && entry.path().filename().string().rfind(name, 0) == 0) {
      addFile(entry.path(), begin, end);
      ++files;
    }
  }
  return files;
}

void SoakLedger::requireAllOf(int source) {
  const std::vector<bool>& seen = m_seen[static_cast<std::size_t>(source)];
  for (std::size_t number = 0; number < seen.size(); ++number) {
    if (!seen[number]) {
      complain("missing: " + SoakLine{source, static_cast<long>(number)}.text());
    }
  }
}

void SoakLedger::requireOrder() {
  for (const int source : m_unordered) {
    complain("messages of source " + std::to_string(source) + " are out of order");
  }
}

void SoakLedger::requireSameAs(const SoakLedger& other) {
  for (std::size_t source = 0; source < m_seen.size(); ++source) {
    for (std::size_t number = 0; number < m_seen[source].size(); ++number) {
      if (m_seen[source][number] != other.m_seen[source][number]) {
        complain((m_seen[source][number] ? "not in " : "missing, but in ") + other.m_name + ": " +
                 SoakLine{static_cast<int>(source), static_cast<long>(number)}.text());
      }
    }
  }
}
