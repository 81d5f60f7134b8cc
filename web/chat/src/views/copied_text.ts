/** The chosen part of the messages as it is read: emotions and pictures by name, nothing around. */
export function copiedText(selection: Selection): string {
  const chosen = document.createElement("div");
  for (let at = 0; at < selection.rangeCount; at++) {
    chosen.append(selection.getRangeAt(at).cloneContents());
  }
  for (const image of chosen.querySelectorAll("img")) {
    const picture = image.classList.contains("picture");
    image.replaceWith(picture ? "\n[Picture]\n" : image.alt);
  }
  for (const button of chosen.querySelectorAll("button.fold")) button.remove();
  const bodies = [...chosen.querySelectorAll(".body, .note")];
  const texts = (bodies.length > 0 ? bodies : [chosen]).map(({ textContent }) => textContent ?? "");
  return texts.map((text) => text.replace(/^\n|\n$/g, "")).join("\n");
}
