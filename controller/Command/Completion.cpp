#include "Command/Completion.h"

#include <fmt/format.h>

#include <CLI/CLI.hpp>

namespace controller {
namespace {

std::string optionsOf(const CLI::App& app) {
  std::string words;
  for (const CLI::Option* const option : app.get_options()) {
    for (const std::string& name : option->get_lnames()) {
      words += (words.empty() ? "--" : " --") + name;
    }
  }
  return words;
}

}  // namespace

std::string bashCompletion(const CLI::App& app) {
  std::string commands;
  std::string cases;
  for (const CLI::App* const command : app.get_subcommands(nullptr)) {
    commands += (commands.empty() ? "" : " ") + command->get_name();
    cases += fmt::format("    {}) options=\"{}\" ;;\n", command->get_name(), optionsOf(*command));
  }
  return fmt::format(R"(# bash completion of quorva
_quorva() {{
  local word=${{COMP_WORDS[COMP_CWORD]}} previous=${{COMP_WORDS[COMP_CWORD-1]}} options=""
  if ((COMP_CWORD == 1)); then
    mapfile -t COMPREPLY < <(compgen -W "{} {}" -- "$word")
    return
  fi
  case $previous in
    --mode) mapfile -t COMPREPLY < <(compgen -W "terminating steady" -- "$word"); return ;;
    --generator) mapfile -t COMPREPLY < <(compgen -W "lagged-fibonacci tausworthe mersenne-twister" -- "$word"); return ;;
    --format) mapfile -t COMPREPLY < <(compgen -W "csv json" -- "$word"); return ;;
    --launcher) mapfile -t COMPREPLY < <(compgen -W "slurm" -- "$word"); return ;;
    --experiment) mapfile -t COMPREPLY < <(compgen -W "all" -- "$word"); return ;;
    completion) mapfile -t COMPREPLY < <(compgen -W "bash" -- "$word"); return ;;
  esac
  case ${{COMP_WORDS[1]}} in
{}  esac
  if [[ $word == -* ]]; then
    mapfile -t COMPREPLY < <(compgen -W "$options" -- "$word")
  else
    mapfile -t COMPREPLY < <(compgen -f -- "$word")
  fi
}}
complete -o filenames -F _quorva quorva
)",
                     commands, optionsOf(app), cases);
}

}  // namespace controller
