// Where one types what the rows of a view are searched for.
export function SearchBox({what, text, onText}: {what: string; text: string; onText: (text: string) => void}) {
  return (
    <label>
      <span class="unseen">{what}</span>
      <input
        type="search"
        placeholder={what}
        value={text}
        spellcheck={false}
        onInput={event => onText(event.currentTarget.value)}
      />
    </label>
  );
}
