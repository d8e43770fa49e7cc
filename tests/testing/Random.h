// Random input for property tests. Every run has a seed of its own; a failing test shows it, and
// NOMIRA_TEST_SEED in the environment makes the next run take the same.
#pragma once

#include <cstdlib>
#include <random>
#include <string>

#include "langtools/Text.h"

namespace nomira::testing {

class Random {
  public:
    Random() : m_nSeed(ChosenSeed()), m_engine(m_nSeed) {}

    // For SCOPED_TRACE.
    std::string Seed() const { return "NOMIRA_TEST_SEED=" + std::to_string(m_nSeed); }

    std::size_t UpTo(std::size_t nMost) {
        return std::uniform_int_distribution<std::size_t>(0, nMost)(m_engine);
    }

    // At most `nMost` characters of the alphabet.
    Text TextOf(TextView sAlphabet, std::size_t nMost) {
        Text sText(UpTo(nMost), u' ');
        for (char16_t& c : sText)
            c = sAlphabet[UpTo(sAlphabet.size() - 1)];
        return sText;
    }

  private:
    static unsigned ChosenSeed() {
        const char* pGiven = std::getenv("NOMIRA_TEST_SEED");
        return pGiven ? static_cast<unsigned>(std::stoul(pGiven)) : std::random_device{}();
    }

    unsigned m_nSeed;
    std::mt19937 m_engine;
};

}  // namespace nomira::testing
