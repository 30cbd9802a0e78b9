// States as storcli abbreviates them; the words are those of the legend it prints below its lists.
export interface State {
  level: "good" | "poor" | "bad";
  words: string;
}

const states = (...rows: [string, State["level"], string][]) =>
  new Map(rows.map(([code, level, words]) => [code, {level, words}]));

export const driveStates = states(
  ["Onln", "good", "online"],
  ["GHS", "good", "global hot spare"],
  ["DHS", "good", "dedicated hot spare"],
  ["UGood", "good", "unconfigured good"],
  ["JBOD", "good", "JBOD"],
  ["Rbld", "poor", "rebuild"],
  ["Cpybck", "poor", "copyback"],
  ["CBShld", "poor", "copyback shielded"],
  ["UGShld", "poor", "unconfigured shielded"],
  ["HSPShld", "poor", "hot spare shielded"],
  ["CFShld", "poor", "configured shielded"],
  ["UGUnsp", "poor", "unsupported"],
  ["Offln", "bad", "offline"],
  ["UBad", "bad", "unconfigured bad"],
  ["UBUnsp", "bad", "unsupported"],
  ["Msng", "bad", "missing"],
  ["Failed", "bad", "failed"],
);

export const volumeStates = states(
  ["Optl", "good", "optimal"],
  ["Cac", "good", "CacheCade"],
  ["Rec", "poor", "recovery"],
  ["Pdgd", "poor", "partially degraded"],
  ["Dgrd", "bad", "degraded"],
  ["OfLn", "bad", "offline"],
);
