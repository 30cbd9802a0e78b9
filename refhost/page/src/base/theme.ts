// Light, dark, or as the system has it. Remembered where the browser lets a page from disk do so.
export type Theme = "system" | "light" | "dark";

const KEY = "qvhost-theme";

export function savedTheme(): Theme {
  try {
    const saved = localStorage.getItem(KEY);
    return saved === "light" || saved === "dark" ? saved : "system";
  } catch {
    return "system";
  }
}

export function applyTheme(theme: Theme): void {
  if (theme === "system") delete document.documentElement.dataset["theme"];
  else document.documentElement.dataset["theme"] = theme;
  try {
    localStorage.setItem(KEY, theme);
  } catch {
    // Then it holds until the page is closed.
  }
}

export function nextTheme(theme: Theme): Theme {
  return ({system: "light", light: "dark", dark: "system"} as const)[theme];
}
