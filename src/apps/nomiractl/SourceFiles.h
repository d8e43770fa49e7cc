// The files port with text files in their place that have been read already: the core opens them by
// their paths as any other file.
#pragma once

#include <map>
#include <memory>
#include <utility>

#include "apps/nomiractl/TextSource.h"
#include "platform/ForwardingFiles.h"

namespace nomira::companion {

class SourceFiles : public ForwardingFiles {
  public:
    using ForwardingFiles::ForwardingFiles;

    // `sPath` as the core has it. Each opening reads it from the start, and tells `onLine`.
    void Put(Text sPath, std::shared_ptr<const TextSource> source, TextSource::OnLine onLine) {
        m_sources[std::move(sPath)] = {std::move(source), std::move(onLine)};
    }

    std::unique_ptr<InputFile> OpenForInput(TextView sPath) override {
        const auto found = m_sources.find(Text(sPath));
        if (found == m_sources.end()) return ForwardingFiles::OpenForInput(sPath);
        return found->second.source->Open(found->second.onLine);
    }

  private:
    struct Source {
        std::shared_ptr<const TextSource> source;
        TextSource::OnLine onLine;
    };

    std::map<Text, Source> m_sources;
};

}  // namespace nomira::companion
