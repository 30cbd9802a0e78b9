// States as storcli abbreviates them; the words are those of the legend it prints below its lists.
export const driveStates = new Map([
  ["Onln", "online"],
  ["GHS", "global hot spare"],
  ["DHS", "dedicated hot spare"],
  ["UGood", "unconfigured good"],
  ["Rbld", "rebuild"],
  ["Cpybck", "copyback"],
  ["CBShld", "copyback shielded"],
  ["UGShld", "unconfigured shielded"],
  ["HSPShld", "hot spare shielded"],
  ["CFShld", "configured shielded"],
  ["UGUnsp", "unsupported"],
  ["Offln", "offline"],
  ["UBad", "unconfigured bad"],
  ["UBUnsp", "unsupported"],
  ["Msng", "missing"],
]);

export const volumeStates = new Map([
  ["Optl", "optimal"],
  ["Cac", "CacheCade"],
  ["Rec", "recovery"],
  ["Pdgd", "partially degraded"],
  ["Dgrd", "degraded"],
  ["OfLn", "offline"],
]);
