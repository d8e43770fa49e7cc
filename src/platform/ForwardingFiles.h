// A files port that passes every statement on to another one: the base of a port that does some of
// them otherwise.
#pragma once

#include "platform/Files.h"

namespace nomira {

class ForwardingFiles : public Files {
  public:
    // `inner` must outlive it.
    explicit ForwardingFiles(Files& inner) : m_inner(inner) {}

    std::unique_ptr<InputFile> OpenForInput(TextView sPath) override {
        return m_inner.OpenForInput(sPath);
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
    Files& m_inner;
};

}  // namespace nomira
