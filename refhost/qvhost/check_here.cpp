#include "qvhost/check_here.h"

#include <exception>
#include <ios>
#include <optional>

#include "files/leftovers.h"
#include "files/temporary_directory.h"
#include "qvhost/base/machine_lock.h"
#include "qvhost/base/trust.h"
#include "qvhost/collect/collect_here.h"
#include "qvhost/present/check.h"

namespace qvhost {

int check_here(const CheckOptions& options, CollectOptions collecting) {
    try {
        std::optional<TemporaryDirectory> place;
        if (collecting.log_dir.empty()) {
            place.emplace("qvhost-check");
            if (judge_private(place->path()).refusal.empty())
                remove_leftovers(place->path().parent_path());
            collecting.log_dir = place->path() / "log";
        }
        collecting.profile = kHealthProfile;
        collecting.quiet = true;
        // What is incomplete is told by the verdict.
        collect_here(collecting, false);
        auto checking = options;
        checking.report = collecting.log_dir;
        return check_report(checking);
    } catch (const std::ios_base::failure&) {
        throw;
    } catch (const MachineBusy& error) {
        tell_unknown(error.what());
        return kMachineBusy;
    } catch (const std::exception& error) {
        return tell_unknown(error.what());
    }
}

}  // namespace qvhost
