#include "apps/nomiractl/Findings.h"

#include <iterator>
#include <utility>

#include "apps/nomiractl/Words.h"
#include "langtools/BasicText.h"

namespace nomira::companion {

void Findings::Begin(std::string sFile, const char* sKind) {
    m_files.push_back({std::move(sFile), sKind});
}

void Findings::Add(Rule rule, Place place, TextView sSubject,
                   const std::vector<std::string>& words) {
    m_all.push_back(
        {rule, m_files.back().sFile, place, Sentence(rule, words), Shown(Trim(sSubject))});
}

void Findings::Append(Findings others) {
    const auto append = [](auto& to, auto& from) {
        to.insert(to.end(), std::make_move_iterator(from.begin()),
                  std::make_move_iterator(from.end()));
    };
    append(m_all, others.m_all);
    append(m_files, others.m_files);
    append(m_rejects, others.m_rejects);
}

void Findings::Reject(std::int64_t nLine, std::string bytes) {
    m_rejects.push_back({m_files.back().sFile, nLine, std::move(bytes)});
}

}  // namespace nomira::companion
