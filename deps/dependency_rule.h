#ifndef DEPS_DEPENDENCY_RULE_H
#define DEPS_DEPENDENCY_RULE_H

#include <string>
#include <unordered_set>
#include <vector>

// The files that a target is made of, and the rule that tells a build of them.
class Dependency_Rule {
  public:
    // In the order of the calls; a path counts once.
    void Add(const std::string& path);
    const std::vector<std::string>& Paths() const { return paths; }

    // A rule in the language of make, as other builds read it too. Each file has an empty rule of its own
    // besides, so that one that is gone asks for the target to be made anew instead of ending the build.
    // Relative paths of files have the folder ahead of them, unless that is empty.
    std::string Text(const std::string& target, const std::string& folder) const;

  private:
    std::vector<std::string> paths;
    std::unordered_set<std::string> known;
};

#endif
