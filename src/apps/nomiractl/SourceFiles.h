// The files port with text files in their place that have been read already: the core opens them by
// their paths as any other file.
#pragma once

#include <map>
#include <memory>
#include <utility>
#include <vector>

#include "apps/nomiractl/TextSource.h"
#include "platform/Files.h"

namespace nomira::companion {

class SourceFiles : public Files {
  public:
    explicit SourceFiles(Files& inner) : m_inner(inner) {}

    // `sPath` as the core has it. Each opening reads it from the start, and tells `onLine`.
    void Put(Text sPath, std::shared_ptr<const TextSource> source, TextSource::OnLine onLine) {
        m_sources[std::move(sPath)] = {std::move(source), std::move(onLine)};
    }

    std::unique_ptr<InputFile> OpenForInput(TextView sPath) override {
        const auto found = m_sources.find(Text(sPath));
        if (found == m_sources.end()) return m_inner.OpenForInput(sPath);
        return found->second.source->Open(found->second.onLine);
    }
    std::unique_ptr<OutputFile> OpenForOutput(TextView sPath) override {
        return m_inner.OpenForOutput(sPath);
    }
    std::vector<Text> Dir(TextView sPath, std::uint16_t nAttributes) override {
        return m_inner.Dir(sPath, nAttributes);
    }
    std::uint16_t GetAttr(TextView sPath) override { return m_inner.GetAttr(sPath); }
    void SetAttr(TextView sPath, std::uint16_t nAttributes) override {
        m_inner.SetAttr(sPath, nAttributes);
    }
    void MkDir(TextView sPath) override { m_inner.MkDir(sPath); }
    void RmDir(TextView sPath) override { m_inner.RmDir(sPath); }
    void Kill(TextView sPath) override { m_inner.Kill(sPath); }
    void Name(TextView sOldPath, TextView sNewPath) override { m_inner.Name(sOldPath, sNewPath); }
    std::vector<Text> Drives() override { return m_inner.Drives(); }

  private:
    struct Source {
        std::shared_ptr<const TextSource> source;
        TextSource::OnLine onLine;
    };

    Files& m_inner;
    std::map<Text, Source> m_sources;
};

}  // namespace nomira::companion
