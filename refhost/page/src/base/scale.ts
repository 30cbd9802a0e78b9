// Values along a line of that length, which begins with the value `low` and ends with `high`.
export const scale = (low: number, high: number, length: number) => (value: number) =>
  ((value - low) / (high - low)) * length;
