// The words of the page, in all languages, and how numbers are written in them. A row: English, German, Japanese.

export const languages = { en: 'English', de: 'Deutsch', ja: '日本語' };

export const TEXTS = {
    name: ['VX drawings', 'VX-Zeichnungen', 'VX図面'],
    stage: ['Drawing', 'Zeichnung', '図面'],
    language: ['Language', 'Sprache', '言語'],
    close: ['Close', 'Schließen', '閉じる'],
    dismiss: ['Close the message', 'Meldung schließen', 'メッセージを閉じる'],
    working: ['drawing…', 'zeichnet …', '描画中…'],
    nothingOpen: ['No drawing is open.', 'Es ist keine Zeichnung offen.', '図面は開かれていません。'],

    startLead: ['Drop a drawing here', 'Hier eine Zeichnung ablegen', 'ここに図面をドロップ'],
    startHow: ['or choose one; .vx, .eps and .gz files, as many as you like. Pasting works too.',
        'oder auswählen: .vx-, .eps- und .gz-Dateien, so viele Sie mögen. Einfügen geht auch.',
        'または選択してください（.vx、.eps、.gz、複数可）。貼り付けもできます。'],
    openFiles: ['Open files…', 'Dateien öffnen …', 'ファイルを開く…'],
    openFolder: ['Open a folder…', 'Ordner öffnen …', 'フォルダーを開く…'],
    open: ['Open files', 'Dateien öffnen', 'ファイルを開く'],
    startSamples: ['None at hand? Look at', 'Keine zur Hand? Ansehen:', 'お手元にないときは：'],
    'sample poster': ['a poster', 'ein Plakat', 'ポスター'],
    'sample butterfly': ['a butterfly', 'einen Schmetterling', '蝶'],
    'sample sleeping-cat': ['a cat', 'eine Katze', '猫'],
    startPrivate: ['Drawings stay on this computer: nothing is uploaded.', 'Zeichnungen bleiben auf diesem Rechner: nichts wird hochgeladen.',
        '図面はこのコンピューターから送信されません。'],
    pasted: ['pasted.vx', 'eingefuegt.vx', 'pasted.vx'],
    cancel: ['Cancel', 'Abbrechen', '中止'],

    opened: ['{name} is open, {width} by {height} mm', '{name} ist offen, {width} mal {height} mm', '{name}を開きました。{width}×{height} mm'],
    pictureOf: ['Picture of {name}, {width} by {height} mm', 'Bild von {name}, {width} mal {height} mm', '{name}の画像、{width}×{height} mm'],
    drawings: ['Drawings', 'Zeichnungen', '図面一覧'],

    notADrawing: ['{name} is not a VX drawing.', '{name} ist keine VX-Zeichnung.', '{name}はVX図面ではありません。'],
    otherKind: ['{name} is a {kind} file, not a VX drawing.', '{name} ist eine {kind}-Datei, keine VX-Zeichnung.', '{name}は{kind}ファイルで、VX図面ではありません。'],
    whatOpens: ['This page opens VX drawings: .vx files, .eps files that hold one, and these packed as .gz.',
        'Diese Seite öffnet VX-Zeichnungen: .vx-Dateien, .eps-Dateien, in denen eine steckt, und beides als .gz gepackt.',
        'このページで開けるのは、.vx、VX図面を含む.eps、それらを圧縮した.gzです。'],
    nothingToOpen: ['There was no drawing among these files.', 'Unter diesen Dateien war keine Zeichnung.', '図面が見つかりませんでした。'],
    otherOrigin: ['This page opens addresses of its own server only. Download the file and drop it here.',
        'Diese Seite öffnet nur Adressen ihres eigenen Servers. Laden Sie die Datei herunter und legen Sie sie hier ab.',
        'このページは同じサーバーのアドレスだけを開きます。ファイルを保存してからドロップしてください。'],
    problemReading: ['{name} cannot be read.', '{name} ist nicht lesbar.', '{name}を読み込めません。'],
    problemMalformed: ['{name} is damaged: it can be read up to some place only.', '{name} ist beschädigt und nur bis zu einer Stelle lesbar.', '{name}は壊れていて、途中までしか読めません。'],
    problemLimit: ['{name} took too long or too much, and was given up.', '{name} brauchte zu lange oder zu viel und wurde aufgegeben.', '{name}は時間または資源がかかりすぎるため中止しました。'],
    problemMemory: ['{name} needs more memory than there is.', '{name} braucht mehr Speicher, als da ist.', '{name}にはメモリーが足りません。'],
    problemCrashed: ['{name} cannot be shown: reading it failed.', '{name} ist nicht darstellbar: das Lesen schlug fehl.', '{name}を表示できません。読み込みに失敗しました。'],
    problemDrawing: ['A part of the drawing cannot be shown.', 'Ein Teil der Zeichnung ist nicht darstellbar.', '図面の一部を表示できません。'],
    problemSaving: ['The file could not be made.', 'Die Datei ließ sich nicht erzeugen.', 'ファイルを作成できませんでした。'],
    problemFont: ['{name} is not a font that can be used.', '{name} ist keine brauchbare Schrift.', '{name}は使えるフォントではありません。'],
    fontAdded: ['{font} was added', '{font} ist hinzugefügt', '{font}を追加しました'],

    scale: ['Scale', 'Maßstab', '倍率'],
    zoomIn: ['Larger (+)', 'Größer (+)', '拡大（+）'],
    zoomOut: ['Smaller (−)', 'Kleiner (−)', '縮小（−）'],
    fit: ['Whole drawing (0)', 'Ganze Zeichnung (0)', '全体表示（0）'],
    actualSize: ['Actual size (1)', 'Tatsächliche Größe (1)', '実寸（1）'],
    panels: ['Panels', 'Bereiche', 'パネル'],

    layers: ['Layers', 'Ebenen', 'レイヤー'],
    layersPrinted: ['As it prints', 'Wie gedruckt', '印刷どおり'],
    layersAll: ['All', 'Alle', 'すべて'],
    layersNone: ['None', 'Keine', 'なし'],
    unnamedLayer: ['(no name)', '(ohne Namen)', '（名前なし）'],
    noLayers: ['This drawing has no layers.', 'Diese Zeichnung hat keine Ebenen.', 'この図面にレイヤーはありません。'],
    layerUnprinted: ['Does not print', 'Wird nicht gedruckt', '印刷されない'],
    layerLocked: ['Locked in an editor', 'Im Editor gesperrt', 'エディターでロック'],
    layerDimmed: ['Its pictures are dimmed in an editor', 'Bilder im Editor abgeblendet', 'エディターで画像を淡色表示'],

    plates: ['Plates', 'Platten', '版'],
    inks: ['Inks', 'Druckfarben', 'インキ'],
    inksAll: ['All inks', 'Alle Farben', 'すべてのインキ'],
    inkAlone: ['alone', 'allein', '単独'],
    inkAloneOf: ['{ink} alone', '{ink} allein', '{ink}のみ'],
    'ink Cyan': ['Cyan', 'Cyan', 'シアン'],
    'ink Magenta': ['Magenta', 'Magenta', 'マゼンタ'],
    'ink Yellow': ['Yellow', 'Gelb', 'イエロー'],
    'ink Black': ['Black', 'Schwarz', 'ブラック'],
    asGray: ['As gray', 'In Grau', 'グレーで表示'],
    asGrayHelp: ['As a plate is exposed: black is a full ink', 'Wie belichtet: Schwarz ist volle Farbe', '露光時のように、黒がインキ100 %'],
    overprint: ['Overprint', 'Überdrucken', 'オーバープリント'],
    overprintHelp: ['Inks that are printed over others, as a press does it', 'Farben, die über andere gedruckt werden, wie in der Presse', '印刷機と同じように重ね刷りを表示'],
    heat: ['Total ink', 'Gesamtfarbauftrag', '総インキ量'],
    heatHelp: ['How much ink is where; red is more than the limit', 'Wie viel Farbe wo liegt; Rot ist mehr als die Grenze', 'インキ量の分布。赤は上限超え'],
    heatLimit: ['Limit', 'Grenze', '上限'],

    text: ['Text', 'Text', 'テキスト'],
    search: ['Search the text', 'Im Text suchen', 'テキストを検索'],
    searchHint: ['Search…', 'Suchen …', '検索…'],
    previousMatch: ['Previous match', 'Voriger Treffer', '前の一致'],
    nextMatch: ['Next match', 'Nächster Treffer', '次の一致'],
    matchOf: ['{at} of {count}', '{at} von {count}', '{count}件中{at}件目'],
    noMatch: ['Not found', 'Nicht gefunden', '見つかりません'],
    noText: ['This drawing has no text.', 'Diese Zeichnung hat keinen Text.', 'この図面にテキストはありません。'],
    copyText: ['Copy all text', 'Ganzen Text kopieren', 'すべてコピー'],

    facts: ['Facts', 'Angaben', '情報'],
    factsDrawing: ['The drawing', 'Die Zeichnung', '図面'],
    factTitle: ['Title', 'Titel', 'タイトル'],
    factFile: ['File', 'Datei', 'ファイル'],
    factSize: ['Size', 'Größe', 'サイズ'],
    factPoints: ['In points', 'In Punkt', 'ポイント'],
    factCreator: ['Made with', 'Erstellt mit', '作成ソフト'],
    factDate: ['Date', 'Datum', '日付'],
    factVersion: ['Version', 'Version', 'バージョン'],
    factBytes: ['File size', 'Dateigröße', 'ファイルサイズ'],
    factWrapping: ['Packed in', 'Verpackt in', '格納形式'],
    factPaths: ['Painted paths', 'Gemalte Pfade', '描画パス数'],
    spotInksMean: ['Spot inks, each with a plate of its own, and what stands in for it on a screen:', 'Schmuckfarben, jede mit eigener Platte, und was am Bildschirm für sie steht:', '特色（独自の版を持つ）と、画面での代替：'],
    factsFonts: ['Fonts', 'Schriften', 'フォント'],
    fontExact: ['is here', 'ist da', '使用中'],
    fontStandIn: ['{font} stands in, with the same widths', '{font} steht dafür, mit gleichen Breiten', '{font}で代替（字幅は同じ）'],
    fontSubstitute: ['{font} in its place, of another design: lines look different', '{font} statt ihrer, anders gestaltet: Zeilen sehen anders aus', '{font}で置換（デザインが異なります）'],
    fontMissing: ['is missing: boxes are shown', 'fehlt: Kästchen werden gezeigt', 'なし（四角で表示）'],
    fontGlyphs: ['{count} of {all} characters are missing in it', '{count} von {all} Zeichen fehlen darin', '{all}文字中{count}文字がありません'],
    fontsHelp: ['Have the right font? Drop its file here, or choose it.', 'Haben Sie die richtige Schrift? Legen Sie die Datei hier ab oder wählen Sie sie.', '正しいフォントがあれば、ここにドロップするか選択してください。'],
    addFonts: ['Add a font…', 'Schrift hinzufügen …', 'フォントを追加…'],
    factsWarnings: ['Notes', 'Hinweise', '注意'],
    noWarnings: ['Everything in the drawing is shown.', 'Alles in der Zeichnung wird gezeigt.', 'すべて表示されています。'],
    inItsWords: ['As the command tells it', 'Wie der Befehl es sagt', 'コマンドの表示'],

    cutShort: ['The file is cut short', 'Die Datei ist abgeschnitten', 'ファイルが途中で切れています'],
    cutShortMeans: ['Its last line is not there. What comes before it is shown.', 'Die letzte Zeile fehlt. Was davor steht, wird gezeigt.', '最後の行がありません。そこまでを表示しています。'],
    fault: ['Line {line} is wrong: {text}', 'Zeile {line} ist falsch: {text}', '{line}行目に誤り：{text}'],
    faultMeans: ['What comes before it is shown.', 'Was davor steht, wird gezeigt.', 'その前までを表示しています。'],
    salvaged: ['{count} faulty places were left out', '{count} fehlerhafte Stellen wurden ausgelassen', '{count}か所の誤りを省きました'],
    salvagedMeans: ['All else is shown.', 'Alles andere wird gezeigt.', 'それ以外は表示しています。'],
    damaged: ['The packed file is damaged: {text}', 'Die gepackte Datei ist beschädigt: {text}', '圧縮ファイルが壊れています：{text}'],
    damagedMeans: ['What could be unpacked is shown.', 'Gezeigt wird, was sich auspacken ließ.', '展開できた部分を表示しています。'],
    undrawn: ['{bytes} at the end are not drawn', '{bytes} am Ende werden nicht gezeichnet', '末尾の{bytes}は描画されません'],
    undrawnMeans: ['A placed file says that the document ends there.', 'Eine eingebettete Datei sagt, dass das Dokument dort endet.', '配置ファイルの終端が文書の終端になっています。'],
    leftOpen: ['Something is begun and not ended', 'Etwas ist begonnen und nicht beendet', '終わっていない要素があります'],
    leftOpenMeans: ['A group, layer or text has no end, as in a file that was cut.', 'Eine Gruppe, Ebene oder ein Text hat kein Ende, wie in einer abgeschnittenen Datei.', 'グループ、レイヤー、テキストに終わりがありません。'],
    patterns: ['{count} patterns are shown as gray', '{count} Muster werden grau gezeigt', '{count}個のパターンは灰色で表示'],
    patternsMeans: ['Their tiles are not read.', 'Ihre Kacheln werden nicht gelesen.', 'パターンの内容は読み込まれません。'],
    placedPictures: ['{count} placed pictures are not shown', '{count} platzierte Bilder werden nicht gezeigt', '{count}個の配置画像は非表示'],
    placedPicturesMeans: ['They were files of their own.', 'Sie waren eigene Dateien.', '別ファイルのためです。'],
    postscript: ['{count} PostScript fragments are passed over', '{count} PostScript-Stücke werden übergangen', '{count}個のPostScript断片を省略'],
    postscriptMeans: ['Programs in drawings are not run.', 'Programme in Zeichnungen werden nicht ausgeführt.', '図面内のプログラムは実行しません。'],
    binary: ['{count} binary sections are passed over', '{count} Binärabschnitte werden übergangen', '{count}個のバイナリー部を省略'],
    binaryMeans: ['As images of pixels.', 'Etwa Pixelbilder.', '画素画像などです。'],
    betweenLayers: ['{count} objects stand between layers', '{count} Objekte stehen zwischen Ebenen', 'レイヤー間に{count}個のオブジェクト'],
    betweenLayersMeans: ['Nothing prints there, so they are not shown.', 'Dort wird nichts gedruckt; sie werden nicht gezeigt.', '印刷されないため表示しません。'],
    mixtures: ['{ink} is mixed in more than one way', '{ink} ist auf mehrere Arten gemischt', '{ink}の混色が複数あります'],
    mixturesMeans: ['A press has one plate for the name.', 'Die Presse hat eine Platte für den Namen.', '印刷では名前ごとに版は一つです。'],

    save: ['Save', 'Sichern', '保存'],
    format: ['Format', 'Format', '形式'],
    'format pdf': ['PDF', 'PDF', 'PDF'],
    'format svg': ['SVG', 'SVG', 'SVG'],
    'format png': ['PNG', 'PNG', 'PNG'],
    'format plates': ['Plates', 'Platten', '版'],
    'about pdf': ['For the press and for archives: the document’s own inks, overprint, layers and text.', 'Für Druck und Archiv: eigene Farben, Überdrucken, Ebenen und Text des Dokuments.', '印刷・保管用。インキ、オーバープリント、レイヤー、テキストを保持。'],
    'about svg': ['For editing and for the web: layers and groups stay.', 'Zum Bearbeiten und fürs Web: Ebenen und Gruppen bleiben.', '編集・Web用。レイヤーとグループを保持。'],
    'about png': ['A picture of what a press would print.', 'Ein Bild dessen, was die Presse druckt.', '印刷結果の画像。'],
    'about plates': ['A gray picture of each ink, in a zip file.', 'Je Farbe ein Graubild, in einer Zip-Datei.', 'インキごとのグレー画像（zip）。'],
    'setting pdf-x': ['For a press (PDF/X)', 'Für den Druck (PDF/X)', '印刷用（PDF/X）'],
    'setting pdf-a': ['For an archive (PDF/A)', 'Fürs Archiv (PDF/A)', '保管用（PDF/A）'],
    'setting text': ['Text', 'Text', 'テキスト'],
    'setting spots': ['Spot inks', 'Schmuckfarben', '特色'],
    'setting dpi': ['Pixels an inch', 'Pixel je Zoll', '解像度（dpi）'],
    'setting background': ['Background', 'Hintergrund', '背景'],
    'setting format': ['Pictures', 'Bilder', '画像形式'],
    'choice pdf-x none': ['no level', 'keine Stufe', 'なし'],
    'choice pdf-x x1a': ['X-1a', 'X-1a', 'X-1a'],
    'choice pdf-x x3': ['X-3', 'X-3', 'X-3'],
    'choice pdf-x x4': ['X-4', 'X-4', 'X-4'],
    'choice pdf-a none': ['no level', 'keine Stufe', 'なし'],
    'choice pdf-a 2b': ['A-2b', 'A-2b', 'A-2b'],
    'choice pdf-a 2u': ['A-2u', 'A-2u', 'A-2u'],
    'choice text text': ['as text', 'als Text', 'テキスト'],
    'choice text outlines': ['as outlines', 'als Umrisse', 'アウトライン'],
    'choice text editable': ['as lines to edit', 'als Zeilen zum Bearbeiten', '編集用の行'],
    'choice spots keep': ['plates of their own', 'eigene Platten', '独自の版'],
    'choice spots process': ['in the four inks', 'in den vier Farben', '4色に置換'],
    'choice background white': ['white', 'weiß', '白'],
    'choice background none': ['transparent', 'durchsichtig', '透明'],
    'choice format png': ['PNG', 'PNG', 'PNG'],
    'choice format tiff': ['TIFF', 'TIFF', 'TIFF'],
    saveFile: ['Save file', 'Datei sichern', 'ファイルを保存'],
    saveShownLayers: ['Only the layers that are shown are in the file.', 'In der Datei sind nur die gezeigten Ebenen.', '表示中のレイヤーだけを保存します。'],
    copyPicture: ['Copy as picture', 'Als Bild kopieren', '画像としてコピー'],
    print: ['Print…', 'Drucken …', '印刷…'],
    printHelp: ['Printing is in real size; choose 100 % and no margins.', 'Gedruckt wird in wahrer Größe: 100 % und ohne Ränder wählen.', '実寸で印刷します。倍率100 %、余白なしを選んでください。'],

    overprints: ['overprints', 'überdruckt', 'オーバープリント'],
    inLayer: ['layer {layer}', 'Ebene {layer}', 'レイヤー {layer}'],
    'object fill': ['Fill', 'Fläche', '塗り'],
    'object stroke': ['Line', 'Linie', '線'],
    'object text': ['Text', 'Text', 'テキスト'],
    'object blend': ['Blend', 'Verlauf', 'グラデーション'],

    keys: ['Keys', 'Tasten', 'キー操作'],
    'key + −': ['larger, smaller', 'größer, kleiner', '拡大、縮小'],
    'key 0': ['the whole drawing', 'die ganze Zeichnung', '全体表示'],
    'key 1': ['actual size', 'tatsächliche Größe', '実寸'],
    'key ← ↑ → ↓': ['move', 'verschieben', '移動'],
    'key PageUp PageDown': ['previous and next drawing', 'vorige und nächste Zeichnung', '前後の図面'],
    'key O': ['open', 'öffnen', '開く'],
    'key L': ['layers', 'Ebenen', 'レイヤー'],
    'key P': ['plates', 'Druckplatten', '版'],
    'key T': ['text', 'Text', 'テキスト'],
    'key I': ['facts', 'Angaben', '情報'],
    'key S': ['save', 'Sichern', '保存'],
    'key Ctrl F': ['search', 'suchen', '検索'],
    'key Ctrl S': ['save', 'sichern', '保存'],
    'key ?': ['this list', 'diese Liste', 'この一覧'],
    keysPointer: ['The wheel and two fingers change the scale, dragging moves the drawing, a double click goes nearer.',
        'Rad und zwei Finger ändern den Maßstab, Ziehen verschiebt, ein Doppelklick geht näher heran.',
        'ホイールと二本指で拡大縮小、ドラッグで移動、ダブルクリックで拡大。'],
};

let language = 'en';

// wanted: a code, or null for what the browser asks for.
export function setLanguage(wanted) {
    const asked = [wanted, ...navigator.languages].filter(Boolean).map((code) => code.slice(0, 2));
    language = asked.find((code) => code in languages) ?? 'en';
    document.documentElement.lang = language;
}

// values stand where their names are, in braces.
export function say(key, values = {}) {
    const row = TEXTS[key];
    if (row === undefined) return values.value ?? key;
    return row[Object.keys(languages).indexOf(language)].replace(/\{(\w+)\}/g, (_, name) => values[name]);
}

export const formatNumber = (number, digits) => new Intl.NumberFormat(language, { maximumFractionDigits: digits, minimumFractionDigits: 0 }).format(number);

export function formatSize(bytes) {
    if (bytes < 1000) return `${formatNumber(bytes, 0)} B`;
    if (bytes < 1e6) return `${formatNumber(bytes / 1000, 1)} kB`;
    return `${formatNumber(bytes / 1e6, 1)} MB`;
}

// Spot inks have the names of the document. Short: the first letter of those of the press.
export function inkName(name, isShort = false) {
    const key = `ink ${name}`;
    if (TEXTS[key] === undefined) return name;
    return isShort ? { Cyan: 'C', Magenta: 'M', Yellow: 'Y', Black: 'K' }[name] : say(key);
}
