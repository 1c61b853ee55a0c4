;; -*- lexical-binding: t; -*-
;; A session in Emacs with Eglot: what is typed, and what is then to be seen. The tool is $NTL_TOOL.
(setq package-user-dir (make-temp-file "ntl" t))
(package-initialize)
(unless (require 'eglot nil t)
  (message "Eglot is missing")
  (kill-emacs 77))
(require 'ntl-mode)
(setq ntl-command (getenv "NTL_TOOL") make-backup-files nil)
(add-hook 'ntl-mode-hook #'eglot-ensure)

(defun expect (what condition got)
  (unless condition
    (message "%s: %S" what got)
    (kill-emacs 1)))

(defun await (what condition)
  (with-timeout (20 (expect what nil (flymake-diagnostics)))
    (while (not (funcall condition)) (accept-process-output nil 0.05))))

(defun diagnostics () (mapcar #'flymake-diagnostic-text (flymake-diagnostics)))
(defun says (part) (seq-some (lambda (text) (string-match-p part text)) (diagnostics)))

(find-file (concat (file-name-as-directory (make-temp-file "ntl" t)) "ümlaut.btl"))
(insert "library \"L\" {\n// Ä tree.\nblock \"ÄPFEL\" {\npin \"A\" inpt;\n}\n"
        "block \"B\" { pin \"C\" output; } mapsto { inst \"i\" \"ÄPFEL\"; }\n}\n")
(save-buffer)
(run-hooks 'post-command-hook)
(await "the server starts" (lambda () (eglot-managed-p)))

;; A fault is shown where it is, and goes when it is mended.
(flymake-start)
(await "a fault is shown" (lambda () (says "did you mean input")))
(goto-char (flymake-diagnostic-beg (car (seq-filter (lambda (each) (string-match-p "did you mean input" (flymake-diagnostic-text each)))
                                                    (flymake-diagnostics)))))
(expect "its place" (looking-at "inpt;") (point))
(delete-char 4)
(insert "input")
(eglot--signal-textDocument/didChange)
(await "it is mended" (lambda () (not (says "did you mean input"))))

(search-forward "\"i\" \"")
(let (shown)
  (eglot-hover-eldoc-function (lambda (text &rest _) (setq shown text)))
  (await "hovering" (lambda () shown))
  (expect "the comment of the block" (string-match-p "Ä tree" shown) shown))
(let ((found (xref-backend-definitions 'eglot (xref-backend-identifier-at-point 'eglot))))
  (expect "definition" (equal (mapcar (lambda (each) (xref-location-line (xref-item-location each))) found) '(3)) found))
(eglot-format-buffer)
(let ((laid-out (buffer-string)))
  (ntl-format-buffer)
  (expect "the text is formatted" (and (equal (buffer-string) laid-out) (string-match-p "^    pin \"A\" input;$" laid-out)) laid-out))

(eglot-shutdown (eglot-current-server))
(set-buffer-modified-p nil)
(delete-directory default-directory t)
(delete-directory package-user-dir t)
