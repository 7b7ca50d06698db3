#ifndef KWBATCH_PLAN_H_
#define KWBATCH_PLAN_H_

#include <optional>
#include <string>
#include <vector>

#include "medium.h"
#include "ports.h"
#include "request.h"

/// A package that is to be installed.
struct Component {
  const Medium* medium;
  std::string name;
  std::string archive;
};

/// What an installation of products, SDK packages or samples will do.
struct Plan {
  Request request;                    ///< with the path of the code tree that was found
  std::optional<int> languages;       ///< language mask; without it, what the target has, or all
  std::vector<Medium> media;          ///< of which something is to be installed
  std::vector<Component> components;  ///< of all of them, in the order of installation
  std::vector<Medium> packs;          ///< service packs that go on again above them
  Registration registration;          ///< of the products' ports and daemon
};

/// Asks the library about everything that could stop the installation. Throws a Refusal. Writes
/// nothing and exports nothing.
Plan MakePlan(const Request& request, std::vector<Medium> media);

/// Does a tree that has all products of the medium lack what comes behind them: the registration,
/// or the satellite of the medium `satellite`, if that is not empty?
bool LacksLastSteps(const Medium& medium, const std::string& target, const PortWishes& ports,
                    const std::string& satellite);

/// The systems that the target has, and those of the media. Throws a Refusal when there are too
/// many.
std::vector<std::string> AllSystems(const std::vector<Medium>& media, const std::string& target);

#endif  // KWBATCH_PLAN_H_
