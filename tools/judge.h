// A scenario, from the side of the run.
#ifndef TAV_TOOLS_JUDGE_H
#define TAV_TOOLS_JUDGE_H

#include "output_watch.h"
#include "run.h"
#include "run_folder.h"
#include "simulator/scenario/scenario.h"
#include "supervisor.h"

namespace tools {

// Fills in what the command line does not say.
void adoptHeader(const tavsim::Scenario& scenario, RunRequest* request);

std::vector<std::string> globsOf(const tavsim::Scenario& scenario);

// Once the program has ended: the exit status of the run, having said on standard error what the
// scenario expected and did not get, unless the player has said so.
int judge(const tavsim::Scenario& scenario, const RunRequest& request, const RunFolder& folder,
          const RunEnd& end, const OutputWatch& output);

}  // namespace tools

#endif
